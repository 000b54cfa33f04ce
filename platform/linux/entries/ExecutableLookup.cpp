#include "platform/linux/entries/ExecutableLookup.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "platform/linux/system/XdgFolders.h"

namespace tavo {
namespace {

using State = ExecutableMatch::State;

constexpr std::string_view kDefaultSearchPath = "/usr/local/bin:/usr/bin:/bin";

// The state of the file at `file`, relative to the open folder `folder` (or AT_FDCWD). Links are
// followed.
State stateOf(int folder, const std::string& file) {
    struct stat facts {};
    const bool permitted = faccessat(folder, file.c_str(), X_OK, 0) == 0;
    if (!permitted && errno != EACCES) {
        return State::missing;
    }
    if (fstatat(folder, file.c_str(), &facts, 0) != 0) {
        return errno == EACCES ? State::unreachable : State::missing;
    }
    if (S_ISDIR(facts.st_mode)) {
        return State::folder;
    }
    return permitted && S_ISREG(facts.st_mode) ? State::executable : State::notExecutable;
}

bool isPath(const std::string& program) {
    return program.find('/') != std::string::npos;
}

// The path of `program`, which has a '/'. A relative one starts at `workingDirectory`; empty when
// that is not known.
std::string located(const std::string& program, const std::string& workingDirectory) {
    if (program.front() == '/') {
        return program;
    }
    return workingDirectory.empty() ? std::string() : workingDirectory + '/' + program;
}

}  // namespace

std::optional<std::string> programOf(const std::string& exec) {
    // Nearly every line is free of what a shell reads specially, and needs no parser.
    if (exec.find_first_of("\"'\\#\n") == std::string::npos) {
        const std::size_t start = exec.find_first_not_of(" \t");
        if (start == std::string::npos) {
            return std::nullopt;
        }
        return exec.substr(start, exec.find_first_of(" \t", start) - start);
    }
    int count = 0;
    char** words = nullptr;
    if (g_shell_parse_argv(exec.c_str(), &count, &words, nullptr) == FALSE) {
        return std::nullopt;
    }
    std::string program = words[0];
    g_strfreev(words);
    return program;
}

ExecutableLookup::ExecutableLookup(std::string_view searchPath)
    : searchPath_(searchPath.empty() ? kDefaultSearchPath : searchPath) {
    for (std::string& path : splitAtColons(searchPath_)) {
        if (path.starts_with('/')) {
            FileDescriptor folder(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
            if (folder.valid()) {
                folders_.push_back({std::move(path), std::move(folder)});
            }
        }
    }
}

ExecutableMatch ExecutableLookup::find(const std::string& program,
                                       const std::string& workingDirectory) const {
    if (isPath(program)) {
        std::string path = located(program, workingDirectory);
        const State state = stateOf(AT_FDCWD, path);
        return state == State::missing ? ExecutableMatch()
                                       : ExecutableMatch{state, std::move(path)};
    }
    ExecutableMatch nearest;
    for (const Folder& folder : folders_) {
        const State state = stateOf(folder.descriptor.get(), program);
        // What a folder that cannot be searched holds is unknown, so nothing is found there.
        if (state > nearest.state && state != State::unreachable) {
            nearest = {state, folder.path + '/' + program};
        }
        if (state == State::executable) {
            break;
        }
    }
    return nearest;
}

bool ExecutableLookup::finds(const std::string& program, const std::string& workingDirectory) {
    const std::string key = isPath(program) ? located(program, workingDirectory) : program;
    const auto [known, isNew] = known_.try_emplace(key, false);
    if (!isNew) {
        return known->second;
    }
    if (isPath(program)) {
        known->second = stateOf(AT_FDCWD, key) == State::executable;
        return known->second;
    }
    // Any folder that has the program will do, so the folder in which the last one was found comes
    // first.
    for (std::size_t i = 0; i < folders_.size() && !known->second; ++i) {
        const std::size_t at = (latest_ + i) % folders_.size();
        if (stateOf(folders_[at].descriptor.get(), program) == State::executable) {
            known->second = true;
            latest_ = at;
        }
    }
    return known->second;
}

}  // namespace tavo
