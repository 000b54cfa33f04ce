#include "platform/linux/ProgramSearch.h"

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

namespace tavo {
namespace {

bool isProgram(const std::string& file) {
    struct stat facts {};
    return access(file.c_str(), X_OK) == 0 && stat(file.c_str(), &facts) == 0 &&
           !S_ISDIR(facts.st_mode);
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

ProgramSearch::ProgramSearch(std::string_view path) {
    while (true) {
        const std::size_t colon = path.find(':');
        std::string folder(path.substr(0, colon));
        folders_.push_back(folder.empty() ? folder : folder + '/');
        if (colon == std::string_view::npos) {
            break;
        }
        path.remove_prefix(colon + 1);
    }
}

bool ProgramSearch::finds(const std::string& program) {
    const auto [known, isNew] = known_.try_emplace(program, false);
    if (isNew) {
        known->second = look(program);
    }
    return known->second;
}

bool ProgramSearch::look(const std::string& program) const {
    if (program.find('/') != std::string::npos) {
        return isProgram(program);
    }
    return std::any_of(folders_.begin(), folders_.end(),
                       [&](const std::string& folder) { return isProgram(folder + program); });
}

}  // namespace tavo
