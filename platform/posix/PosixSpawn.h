// Starting a program as a child process.
//
// Every child gets the null device as standard input, no descriptor of ours beyond the three
// standard ones, no blocked signals and the default disposition of each. Whoever starts one reaps
// it.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tavo {

struct ProgramStart {
    enum class Group {
        ownSession,  // outlives us, out of reach of our terminal's signals
        ownGroup,    // can be ended with everything it started by one signal to the group
    };

    std::string executable;  // its path; also the program's name for itself
    std::vector<std::string> arguments;
    std::vector<std::string> environment;  // "NAME=value"
    std::string workingDirectory;          // empty: ours
    int output = -1;  // becomes standard output, standard error is dropped; -1: both are ours
    Group group = Group::ownSession;
};

// Any thread. 0 and the process in `process`, or the errno value that says why nothing runs; it
// is the answer of exec itself, so 0 means that the program has begun.
[[nodiscard]] int startProgram(const ProgramStart& start, pid_t& process);

}  // namespace tavo
