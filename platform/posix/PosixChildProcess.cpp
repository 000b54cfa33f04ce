#include "platform/posix/PosixChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>

#include <poll.h>
#include <sys/wait.h>

#include "platform/posix/Pipe.h"
#include "platform/posix/PosixSpawn.h"

namespace tavo {
namespace {

using Clock = std::chrono::steady_clock;

// Whether something can be read before `deadline`.
bool readableBefore(int descriptor, Clock::time_point deadline) {
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd wanted = {descriptor, POLLIN, 0};
        const int ready = ::poll(&wanted, 1, static_cast<int>(std::max<long long>(left, 0)));
        if (ready > 0) {
            return true;
        }
        if (ready == 0 && left <= 0) {
            return false;
        }
        if (ready < 0 && errno != EINTR) {
            return false;
        }
    }
}

void reap(pid_t process) {
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// True when the child has ended. Where SIGCHLD is ignored the system has reaped it already.
bool reapIfEnded(pid_t process) {
    const pid_t result = ::waitpid(process, nullptr, WNOHANG);
    return result == process || (result < 0 && errno == ECHILD);
}

// POSIX offers no descriptor that becomes readable when a child ends, so waitpid is repeated every
// millisecond. When this is called, the child has closed its output and is about to end.
bool endsBefore(pid_t process, Clock::time_point deadline) {
    while (!reapIfEnded(process)) {
        if (Clock::now() >= deadline) {
            return false;
        }
        ::poll(nullptr, 0, 1);
    }
    return true;
}

class PosixChildProcess final : public ChildProcess {
public:
    explicit PosixChildProcess(ChildProcessLimits limits) : limits_(limits) {}

    std::optional<std::string> output(const std::string& executable,
                                      const std::vector<std::string>& arguments) override {
        const Clock::time_point deadline = Clock::now() + limits_.time;
        Pipe pipe = makePipe();
        pid_t process = 0;
        if (!pipe.reading.valid() || !start(executable, arguments, pipe.writing.get(), process)) {
            return std::nullopt;
        }
        pipe.writing.close();
        std::optional<std::string> answer = readAll(pipe.reading.get(), deadline);
        if (!answer || !endsBefore(process, deadline)) {
            ::kill(-process, SIGKILL);
            reap(process);
            return std::nullopt;
        }
        return answer;
    }

private:
    static bool start(const std::string& executable, const std::vector<std::string>& arguments,
                      int output, pid_t& process) {
        SpawnRequest program;
        program.executable = executable;
        program.arguments = arguments;
        for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
            program.environment.emplace_back(*variable);
        }
        program.output = output;
        program.group = SpawnRequest::Group::ownGroup;
        return spawnProgram(program, process) == 0;
    }

    [[nodiscard]] std::optional<std::string> readAll(int descriptor,
                                                     Clock::time_point deadline) const {
        std::string bytes;
        while (readableBefore(descriptor, deadline)) {
            char block[16384];
            const ssize_t got = ::read(descriptor, block, sizeof block);
            if (got == 0) {
                return bytes;
            }
            if (got < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return std::nullopt;
            }
            bytes.append(block, static_cast<std::size_t>(got));
            if (bytes.size() > limits_.bytes) {
                return std::nullopt;
            }
        }
        return std::nullopt;
    }

    const ChildProcessLimits limits_;
};

}  // namespace

std::unique_ptr<ChildProcess> makePosixChildProcess(ChildProcessLimits limits) {
    return std::make_unique<PosixChildProcess>(limits);
}

}  // namespace tavo
