#include "tests/platform/linux/ChildProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavo {

ChildProgram::ChildProgram(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);

    std::array<int, 2> toChild{};
    std::array<int, 2> fromChild{};
    if (pipe2(toChild.data(), O_CLOEXEC) != 0 || pipe2(fromChild.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent && dup2(toChild[0], STDIN_FILENO) >= 0 &&
            dup2(fromChild[1], STDOUT_FILENO) >= 0) {
            execv(arguments[0], arguments.data());
        }
        _exit(127);
    }
    ::close(toChild[0]);
    ::close(fromChild[1]);
    input_ = toChild[1];
    output_ = fromChild[0];
    if (process_ < 0) {
        throw std::runtime_error("no process");
    }
}

ChildProgram::~ChildProgram() {
    if (process_ > 0) {
        kill();
        wait();
    }
    closeInput();
    ::close(output_);
}

std::optional<std::string> ChildProgram::readLine() {
    for (;;) {
        if (const std::size_t end = unread_.find('\n'); end != std::string::npos) {
            std::string line = unread_.substr(0, end);
            unread_.erase(0, end + 1);
            return line;
        }
        std::array<char, 4096> bytes{};
        const ssize_t count = read(output_, bytes.data(), bytes.size());
        if (count > 0) {
            unread_.append(bytes.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return std::nullopt;
        }
    }
}

void ChildProgram::writeLine(const std::string& line) {
    const std::string bytes = line + "\n";
    if (write(input_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the program does not listen");
    }
}

std::string ChildProgram::ask(const std::string& line) {
    writeLine(line);
    return readLine().value_or("(no answer)");
}

void ChildProgram::closeInput() {
    if (input_ >= 0) {
        ::close(input_);
        input_ = -1;
    }
}

void ChildProgram::kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
    }
}

int ChildProgram::wait() {
    int status = 0;
    while (process_ > 0 && waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    return status;
}

}  // namespace tavo
