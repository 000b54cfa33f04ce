#include "platform/posix/PosixChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>

#include "platform/posix/FileDescriptor.h"
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

// Reaped already, or by the system where SIGCHLD is ignored.
bool reapIfEnded(pid_t process) {
    const pid_t result = ::waitpid(process, nullptr, WNOHANG);
    return result == process || (result < 0 && errno == ECHILD);
}

// POSIX offers no descriptor that becomes readable when a child ends, so waitpid is repeated every
// millisecond. The child has closed its output by then and is about to end.
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
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            return std::nullopt;
        }
        const FileDescriptor reading(ends[0]);
        FileDescriptor writing(ends[1]);
        pid_t process = 0;
        if (!start(executable, arguments, writing.get(), process)) {
            return std::nullopt;
        }
        writing.close();
        std::optional<std::string> answer = readAll(reading.get(), deadline);
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
        ProgramStart program;
        program.executable = executable;
        program.arguments = arguments;
        for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
            program.environment.emplace_back(*variable);
        }
        program.output = output;
        program.group = ProgramStart::Group::ownGroup;
        return startProgram(program, process) == 0;
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
