#include "platform/linux/icons/IconRenderer.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/renderer/Protocol.h"
#include "platform/linux/system/Pidfd.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/PosixSpawn.h"

namespace tavo {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// The renderer's own limit is one second. These limits are for a renderer that is stopped
// (SIGSTOP), or that waits for a disk which does not answer.
constexpr auto kPatience = 2s;
constexpr auto kPatienceAtStart = 4s;

std::vector<std::string> ownEnvironment() {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    return variables;
}

}  // namespace

// A running renderer, and our end of its socket. The destructor kills and reaps the process.
class IconRenderer::Process {
public:
    // Absent, with the reason in errno, when no process can be started.
    static std::optional<Process> start(const std::string& program) {
        int ends[2] = {-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            return std::nullopt;
        }
        Process process;
        process.socket_ = FileDescriptor(ends[0]);
        const FileDescriptor theirs(ends[1]);
        SpawnRequest request;
        request.executable = program;
        request.environment = ownEnvironment();
        request.output = theirs.get();
        if (const int failure = spawnProgram(request, process.pid_); failure != 0) {
            process.pid_ = 0;
            errno = failure;
            return std::nullopt;
        }
        process.handle_ = openPidfd(process.pid_);
        return process;
    }

    Process(Process&& other) noexcept
        : pid_(std::exchange(other.pid_, 0)),
          handle_(std::move(other.handle_)),
          socket_(std::move(other.socket_)),
          fresh_(other.fresh_) {}
    Process& operator=(Process&&) = delete;
    ~Process() { end(); }

    // Ends the process and reaps it. True when it had ended itself because a picture took a second
    // of the processor's time. A process that waits for a disk cannot be ended and is left alone.
    bool end() {
        if (pid_ <= 0) {
            return false;
        }
        const pid_t process = std::exchange(pid_, 0);
        // Killed by its pidfd: where SIGCHLD is ignored, its PID may already belong to another
        // process.
        if (handle_.valid()) {
            ::syscall(SYS_pidfd_send_signal, handle_.get(), SIGKILL, nullptr, 0);
        }
        socket_.close();
        pollfd ended = {handle_.get(), POLLIN, 0};
        if (handle_.valid() && ::poll(&ended, 1, 200) == 0) {
            return false;
        }
        int status = 0;
        rusage used = {};
        pid_t reaped = 0;
        while ((reaped = ::wait4(process, &status, 0, &used)) < 0 && errno == EINTR) {
        }
        const auto milliseconds = [](const timeval& time) {
            return time.tv_sec * 1000 + time.tv_usec / 1000;
        };
        return reaped == process && WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM &&
               milliseconds(used.ru_utime) + milliseconds(used.ru_stime) >= 800;
    }

    // Sends the request and receives the answer. False when that fails; the process is of no use
    // then.
    bool ask(const std::string& path, int side, std::optional<IconImage>& image) {
        deadline_ = Clock::now() + (std::exchange(fresh_, false) ? kPatienceAtStart : kPatience);
        const IconRequest request = {static_cast<std::uint32_t>(side),
                                     static_cast<std::uint32_t>(path.size())};
        std::string message(reinterpret_cast<const char*>(&request), sizeof request);
        message += path;
        // The empty buffer of the socket takes a whole request at once.
        if (::send(socket_.get(), message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT) !=
            static_cast<ssize_t>(message.size())) {
            return false;
        }
        const auto pixels = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
        IconPixelCount count = 0;
        if (!receive(&count, sizeof count) || (count != 0 && count != pixels)) {
            return false;
        }
        if (count == 0) {
            return true;
        }
        IconImage drawn = {side, std::vector<std::uint32_t>(pixels)};
        if (!receive(drawn.pixels.data(), pixels * sizeof(std::uint32_t))) {
            return false;
        }
        image = std::move(drawn);
        return true;
    }

private:
    Process() = default;

    bool receive(void* into, std::size_t count) {
        auto* bytes = static_cast<char*>(into);
        while (count > 0) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
            pollfd readable = {socket_.get(), POLLIN, 0};
            const int ready =
                left.count() > 0 ? ::poll(&readable, 1, static_cast<int>(left.count())) : 0;
            if (ready < 0 && errno == EINTR) {
                continue;
            }
            const ssize_t got =
                ready > 0 ? ::recv(socket_.get(), bytes, count, MSG_DONTWAIT) : ssize_t{0};
            if (got <= 0) {
                return false;
            }
            bytes += got;
            count -= static_cast<std::size_t>(got);
        }
        return true;
    }

    pid_t pid_ = 0;
    FileDescriptor handle_;
    FileDescriptor socket_;
    Clock::time_point deadline_;  // of the request under way
    bool fresh_ = true;           // nothing was asked yet
};

IconRenderer::IconRenderer(std::string program) : program_(std::move(program)) {}

IconRenderer::~IconRenderer() = default;

std::optional<IconRenderer::Process> IconRenderer::take() {
    {
        const std::lock_guard lock(mutex_);
        if (!idle_.empty()) {
            Process process = std::move(idle_.back());
            idle_.pop_back();
            return process;
        }
    }
    std::optional<Process> process = Process::start(program_);
    const int reason = errno;
    const std::lock_guard lock(mutex_);
    if (!process && !std::exchange(missing_, true)) {
        std::fprintf(stderr, "tavolauncher: icons are not drawn, because %s does not start: %s\n",
                     program_.c_str(), std::strerror(reason));
    } else if (process) {
        missing_ = false;
    }
    return process;
}

IconRenderer::Answer IconRenderer::draw(const std::string& path, int side) {
    if (path.size() > kLongestIconPath || side < 1 || side > static_cast<int>(kLargestIconSide)) {
        return {};
    }
    std::optional<Process> process = take();
    if (!process) {
        return {.image = std::nullopt, .failed = true};
    }
    Answer answer;
    if (!process->ask(path, side, answer.image)) {
        // A picture that used up its second is to blame itself, and not a busy machine.
        answer.failed = !process->end();
        std::string shown = path;
        std::ranges::replace_if(
            shown, [](unsigned char letter) { return std::iscntrl(letter) != 0; }, '?');
        std::fprintf(stderr, "tavolauncher: the icon %s was not drawn\n", shown.c_str());
        return answer;
    }
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(*process));
    return answer;
}

void IconRenderer::rest() {
    std::vector<Process> ended;
    const std::lock_guard lock(mutex_);
    ended.swap(idle_);
}

}  // namespace tavo
