#include "platform/linux/opening/ProgramCheck.h"

#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/opening/LaunchErrors.h"
#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

// As much of a script's first line as the kernel reads.
constexpr std::size_t kScriptHead = 256;

enum class Kind { missing, folder, notExecutable, executable };

Kind kindOf(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return Kind::missing;
    }
    if (S_ISDIR(status.st_mode)) {
        return Kind::folder;
    }
    return S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0 ? Kind::executable
                                                                        : Kind::notExecutable;
}

std::vector<std::string> candidates(const std::string& program, const std::string& searchPath,
                                    const std::string& workingDirectory) {
    if (program.empty()) {
        return {};
    }
    if (program.front() == '/') {
        return {program};
    }
    if (program.find('/') != std::string::npos) {
        return workingDirectory.empty() ? std::vector<std::string>()
                                        : std::vector{workingDirectory + '/' + program};
    }
    std::vector<std::string> paths;
    for (std::size_t begin = 0; begin <= searchPath.size();) {
        const std::size_t end = std::min(searchPath.find(':', begin), searchPath.size());
        if (end > begin) {
            paths.push_back(searchPath.substr(begin, end - begin) + '/' + program);
        }
        begin = end + 1;
    }
    return paths;
}

// The words of a script's first line after "#!", none when it has none.
std::vector<std::string> interpreterWords(const std::string& path) {
    const std::string head = readFileHead(path, kScriptHead);
    if (!head.starts_with("#!")) {
        return {};
    }
    const std::string line = head.substr(2, head.find('\n', 2) - 2);
    constexpr std::string_view kBlank = " \t";
    std::vector<std::string> words;
    for (std::size_t begin = line.find_first_not_of(kBlank); begin != std::string::npos;) {
        const std::size_t end = std::min(line.find_first_of(kBlank, begin), line.size());
        words.push_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(kBlank, end);
    }
    return words;
}

bool isEnv(const std::string& interpreter) {
    return interpreter == "env" || interpreter.ends_with("/env");
}

}  // namespace

Result<std::string> findProgram(const std::string& program, const std::string& searchPath,
                                const std::string& workingDirectory) {
    Kind nearest = Kind::missing;
    std::string where;
    for (const std::string& path : candidates(program, searchPath, workingDirectory)) {
        const Kind kind = kindOf(path);
        if (kind == Kind::executable) {
            return path;
        }
        if (kind > nearest) {
            nearest = kind;
            where = path;
        }
    }
    switch (nearest) {
        case Kind::folder:
            return messages::programIsFolder(where);
        case Kind::notExecutable:
            return messages::programNotExecutable(where);
        default:
            return program.find('/') == std::string::npos
                       ? messages::programNotFound(program, searchPath)
                       : messages::programMissing(program);
    }
}

std::optional<Error> whyScriptCannotRun(const std::string& path, const std::string& searchPath) {
    const std::vector<std::string> words = interpreterWords(path);
    if (words.empty()) {
        return std::nullopt;
    }
    if (kindOf(words[0]) != Kind::executable) {
        return messages::interpreterMissing(path, words[0]);
    }
    // Options and assignments of env are its own business.
    if (isEnv(words[0]) && words.size() > 1 && words[1].front() != '-' &&
        words[1].find('=') == std::string::npos && !findProgram(words[1], searchPath, "")) {
        return messages::interpreterMissing(path, words[1]);
    }
    return std::nullopt;
}

}  // namespace tavo
