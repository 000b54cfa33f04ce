// Starting a program as a child process.
//
// Every child gets the null device as standard input, none of our descriptors but the three
// standard ones, no blocked signals and the default disposition of each signal. The caller reaps
// the child.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tavo {

struct SpawnRequest {
    enum class Group {
        ownSession,  // our terminal's signals do not reach the child, which may outlive us
        ownGroup,    // one signal to the group ends the child and all that it started
    };

    std::string executable;                // a path; also the child's argv[0]
    std::vector<std::string> arguments;    // from argv[1] on
    std::vector<std::string> environment;  // "NAME=value"
    std::string workingDirectory;          // empty: ours
    // The descriptor that becomes the child's standard output; its standard error then goes to the
    // null device. -1: the child shares our standard output and error.
    int output = -1;
    Group group = Group::ownSession;
};

// Returns 0 and puts the child's PID into `process`, or returns the errno value that says why no
// program runs. After 0, exec(2) has succeeded, too. Any thread.
[[nodiscard]] int spawnProgram(const SpawnRequest& request, pid_t& process);

}  // namespace tavo
