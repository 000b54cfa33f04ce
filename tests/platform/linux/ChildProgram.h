// A program that a test starts, talks to line by line, and kills. Dies with the test.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tavo {

class ChildProgram {
public:
    // `command`: the program's path and its arguments.
    explicit ChildProgram(const std::vector<std::string>& command);
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    // The next whole line of its standard output without the line's end; absent when the output
    // has ended. A last line without an end was never fully said, and does not count.
    std::optional<std::string> readLine();

    void writeLine(const std::string& line);
    std::string ask(const std::string& line);
    void closeInput();

    void kill();

    // Its exit status as waitpid(2) has it.
    int wait();

private:
    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string unread_;
};

}  // namespace tavo
