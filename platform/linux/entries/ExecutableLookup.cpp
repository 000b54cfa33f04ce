#include "platform/linux/entries/ExecutableLookup.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

namespace tavo {
namespace {

bool isProgram(int folder, const std::string& file) {
    struct stat facts {};
    return faccessat(folder, file.c_str(), X_OK, 0) == 0 &&
           fstatat(folder, file.c_str(), &facts, 0) == 0 && !S_ISDIR(facts.st_mode);
}

}  // namespace

std::optional<std::string> programOf(const std::string& exec) {
    // Nearly every line is free of what a shell reads specially.
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

ExecutableLookup::ExecutableLookup(std::string_view path) {
    while (true) {
        const std::size_t colon = path.find(':');
        const std::string folder(path.substr(0, colon));
        const int opened =
            open(folder.empty() ? "." : folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (opened >= 0) {
            folders_.push_back(opened);
        }
        if (colon == std::string_view::npos) {
            break;
        }
        path.remove_prefix(colon + 1);
    }
}

ExecutableLookup::~ExecutableLookup() {
    for (const int folder : folders_) {
        close(folder);
    }
}

bool ExecutableLookup::finds(const std::string& program) {
    const auto [known, isNew] = known_.try_emplace(program, false);
    if (isNew) {
        known->second = look(program);
    }
    return known->second;
}

bool ExecutableLookup::look(const std::string& program) {
    if (program.find('/') != std::string::npos) {
        return isProgram(AT_FDCWD, program);
    }
    const auto found = std::find_if(folders_.begin(), folders_.end(),
                                    [&](int folder) { return isProgram(folder, program); });
    if (found == folders_.end()) {
        return false;
    }
    // Which folder has it does not matter, so the next program is looked for in this one first.
    std::iter_swap(folders_.begin(), found);
    return true;
}

}  // namespace tavo
