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
    // and waits for it to exit; standard error is dropped, the exit status not looked at. Absent
    // when it could not be started or gave no answer within the adapter's bounds in time and
    // bytes. Main thread, which it blocks meanwhile.
    [[nodiscard]] virtual std::optional<std::string> output(
        const std::string& executable, const std::vector<std::string>& arguments) = 0;
};

}  // namespace tavo
