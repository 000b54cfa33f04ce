#include "app/linux/DisplayFailures.h"

#include <QString>
#include <QtGlobal>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <pthread.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

constexpr int kNoDisplay = 1;
constexpr std::chrono::seconds kLook{1};
constexpr int kSilentLooks = 10;

// The real standard error while it is held back. The toolkit calls its message handler without
// anything of ours, on any thread.
std::atomic<int> realError = STDERR_FILENO;

// exit() may run on any thread that the display's end is noticed on.
std::atomic<bool> endsWithDisplay = false;

// The displays that the environment names, as its variables are called.
std::string displays() {
    std::string text;
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            text += (text.empty() ? "" : ", ") + std::string(name) + "=" + value;
        }
    }
    return text.empty() ? "neither DISPLAY nor WAYLAND_DISPLAY is set" : text;
}

[[noreturn]] void fail(const char* what) {
    ::dprintf(realError, "tavolauncher: %s (%s)\n", what, displays().c_str());
    ::_exit(kNoDisplay);
}

void take(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtFatalMsg) {
        fail("no display could be opened");
    }
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

void leave() {
    if (endsWithDisplay) {
        ::_exit(kNoDisplay);
    }
}

}  // namespace

// Standard error, kept in memory. Where that cannot be had it stays as it is.
class StartGuard::HeldError {
public:
    HeldError() {
        std::fflush(stderr);
        if (real_.valid()) {
            held_ = FileDescriptor(::memfd_create("held", MFD_CLOEXEC));
        }
        if (held_.valid()) {
            realError = real_.get();
            ::dup2(held_.get(), STDERR_FILENO);
        }
    }

    HeldError(const HeldError&) = delete;
    HeldError& operator=(const HeldError&) = delete;

    ~HeldError() {
        if (!held_.valid()) {
            return;
        }
        std::fflush(stderr);
        ::dup2(real_.get(), STDERR_FILENO);
        realError = STDERR_FILENO;
        std::array<char, 4096> bytes;
        off_t at = 0;
        for (ssize_t size = 0; (size = ::pread(held_.get(), bytes.data(), bytes.size(), at)) > 0;
             at += size) {
            std::fwrite(bytes.data(), 1, static_cast<std::size_t>(size), stderr);
        }
    }

private:
    const FileDescriptor real_{::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)};
    FileDescriptor held_;
};

// Ends the process when the thread that made it waits for one and the same thing all the time. A
// machine that is slow to load what the toolkit needs does something at least.
class StartGuard::Watch {
public:
    Watch() {
        if (::pthread_getcpuclockid(::pthread_self(), &clock_) == 0) {
            thread_ = std::thread([this] { run(); });
        }
    }

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    ~Watch() {
        {
            const std::lock_guard lock(mutex_);
            over_ = true;
        }
        changed_.notify_all();
        if (thread_.joinable()) {
            thread_.join();
        }
    }

private:
    void run() {
        std::unique_lock lock(mutex_);
        std::timespec before = {};
        for (int silent = 0; silent < kSilentLooks;) {
            if (changed_.wait_for(lock, kLook, [this] { return over_; })) {
                return;
            }
            std::timespec used = {};
            ::clock_gettime(clock_, &used);
            const bool same = used.tv_sec == before.tv_sec && used.tv_nsec == before.tv_nsec;
            silent = same ? silent + 1 : 0;
            before = used;
        }
        fail("the display does not answer");
    }

    clockid_t clock_ = {};
    std::mutex mutex_;
    std::condition_variable changed_;
    bool over_ = false;  // under the mutex
    std::thread thread_;
};

StartGuard::StartGuard()
    : error_(std::make_unique<HeldError>()), watch_(std::make_unique<Watch>()) {
    qInstallMessageHandler(take);
}

StartGuard::~StartGuard() {
    qInstallMessageHandler(nullptr);
}

DisplayLossGuard::DisplayLossGuard() {
    endsWithDisplay = true;
    // Registered last, called first.
    std::atexit(leave);
}

DisplayLossGuard::~DisplayLossGuard() {
    endsWithDisplay = false;
}

}  // namespace tavo
