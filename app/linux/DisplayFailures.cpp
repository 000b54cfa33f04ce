#include "app/linux/DisplayFailures.h"

#include <QString>
#include <QtGlobal>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

constexpr int kNoDisplay = 1;

// Less than another start waits for this one (InstancePatience::start).
constexpr unsigned kSilenceSeconds = 12;

// The variables below are global for Qt's message handler and the signal handler, which take no
// argument.

// The real standard error and the held one; the latter is invalid while nothing is held.
int realError = STDERR_FILENO;
int heldError = -1;

// Whether Qt has said that the display refused the connection, or that a plug-in is missing.
std::atomic<bool> displayRefused = false;
std::atomic<bool> pluginMissing = false;

std::string silenceLine;

std::atomic<bool> endsWithDisplay = false;

// The displays that the environment names, each as "NAME=value" of the variable.
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

std::string failureLine(const char* what) {
    return std::string("tavolauncher: ") + what + " (" + displays() + ")\n";
}

// Writes `line` and ends the process. Async-signal-safe.
[[noreturn]] void endWith(const std::string& line) {
    [[maybe_unused]] const ssize_t written = ::write(realError, line.data(), line.size());
    ::_exit(kNoDisplay);
}

void displayIsSilent(int /*signal*/) {
    endWith(silenceLine);
}

void printHeldError() {
    std::fflush(stderr);
    std::array<char, 4096> bytes;
    off_t at = 0;
    for (ssize_t size = 0; (size = ::pread(heldError, bytes.data(), bytes.size(), at)) > 0;
         at += size) {
        [[maybe_unused]] const ssize_t written =
            ::write(realError, bytes.data(), static_cast<std::size_t>(size));
    }
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    const std::string_view category = context.category != nullptr ? context.category : "";
    displayRefused = displayRefused || category == "qt.qpa.xcb" || category == "qt.qpa.wayland";
    pluginMissing = pluginMissing || (category == "qt.qpa.plugin" &&
                                      message.startsWith(QLatin1String("Could not find")));
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
    if (type == QtFatalMsg) {
        if (pluginMissing || !displayRefused) {
            printHeldError();
        }
        endWith(failureLine("no display could be opened"));
    }
}

void leave() {
    if (endsWithDisplay) {
        ::_exit(kNoDisplay);
    }
}

QtMessageHandler handleMessageBefore = nullptr;

// Qt 6.4 calls exit() after this warning, Qt 6.8 _exit() with a status of its own.
void handleLoss(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    handleMessageBefore(type, context, message);
    if (message.startsWith(QLatin1String("The Wayland connection "))) {
        ::_exit(kNoDisplay);
    }
}

}  // namespace

// Keeps what is written to standard error in memory. Does nothing where the system has no
// descriptor for that.
class StartGuard::HeldError {
public:
    HeldError() {
        std::fflush(stderr);
        if (real_.valid() && held_.valid()) {
            realError = real_.get();
            heldError = held_.get();
            ::dup2(heldError, STDERR_FILENO);
        }
    }

    HeldError(const HeldError&) = delete;
    HeldError& operator=(const HeldError&) = delete;

    ~HeldError() {
        printHeldError();
        ::dup2(realError, STDERR_FILENO);
        realError = STDERR_FILENO;
        heldError = -1;
    }

private:
    const FileDescriptor real_{::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)};
    const FileDescriptor held_{::memfd_create("held", MFD_CLOEXEC)};
};

StartGuard::StartGuard() : error_(std::make_unique<HeldError>()) {
    silenceLine = failureLine("the display does not answer");
    struct sigaction action = {};
    action.sa_handler = displayIsSilent;
    ::sigaction(SIGALRM, &action, nullptr);
    ::alarm(kSilenceSeconds);
    qInstallMessageHandler(handleMessage);
}

StartGuard::~StartGuard() {
    ::alarm(0);
    std::signal(SIGALRM, SIG_DFL);
    qInstallMessageHandler(nullptr);
}

DisplayLossGuard::DisplayLossGuard() {
    endsWithDisplay = true;
    // Handlers run in reverse order, so this one runs before those of the libraries.
    std::atexit(leave);
    handleMessageBefore = qInstallMessageHandler(handleLoss);
}

DisplayLossGuard::~DisplayLossGuard() {
    qInstallMessageHandler(handleMessageBefore);
    endsWithDisplay = false;
}

}  // namespace tavo
