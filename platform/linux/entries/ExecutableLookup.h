// Finds the programs that desktop entries name. The scan and the start of applications share these
// rules, so that an entry which is listed is not refused for its program.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/posix/FileDescriptor.h"

namespace tavo {

// The program in the command line of an Exec key: its first word, unquoted as a shell would.
// Absent when the line is empty or cannot be split into words.
std::optional<std::string> programOf(const std::string& exec);

struct ExecutableMatch {
    // Each state is nearer to an executable file than the one before it.
    enum class State {
        missing,
        unreachable,  // in a folder that the user may not search
        folder,
        notExecutable,
        executable,
    };
    State state = State::missing;
    std::string path;  // empty when missing
};

// Looks programs up in a search path. Make a new object for each scan and each start: it may not
// see what is installed later. One thread.
class ExecutableLookup {
public:
    // `searchPath` as in PATH; empty: the system's usual folders, as where PATH is not set. Items
    // that are not absolute do not count: for the started program, which has a working folder of
    // its own, they would mean other folders. The folders are opened here once, which halves the
    // cost of each look-up.
    explicit ExecutableLookup(std::string_view searchPath);

    [[nodiscard]] const std::string& searchPath() const { return searchPath_; }

    // The file that the command word `program` means: an absolute path, a path from
    // `workingDirectory` (the entry's Path) when it holds a slash, else the first executable file
    // of that name in the search path. Where there is no executable file, the match that is nearest
    // to one.
    [[nodiscard]] ExecutableMatch find(const std::string& program,
                                       const std::string& workingDirectory = {}) const;

    // Whether find() finds an executable file. Quicker; the answer is remembered.
    [[nodiscard]] bool finds(const std::string& program, const std::string& workingDirectory = {});

private:
    struct Folder {
        std::string path;
        FileDescriptor descriptor;
    };

    const std::string searchPath_;
    std::vector<Folder> folders_;
    std::size_t latest_ = 0;  // index of the folder in which a program was last found
    std::unordered_map<std::string, bool> known_;
};

}  // namespace tavo
