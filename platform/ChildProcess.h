// Running a small system program for its output.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tavo {

class ChildProcess {
public:
    virtual ~ChildProcess() = default;

    // Runs `executable` (an absolute path) with `arguments`, reads its standard output to the end
    // and waits for it to exit; standard error and the exit status are ignored. Absent when the
    // program could not be started, or exceeded the adapter's limits of time or bytes. Main thread,
    // which is blocked meanwhile.
    [[nodiscard]] virtual std::optional<std::string> output(
        const std::string& executable, const std::vector<std::string>& arguments) = 0;
};

}  // namespace tavo
