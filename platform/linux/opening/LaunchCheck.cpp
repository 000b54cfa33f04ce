#include "platform/linux/opening/LaunchCheck.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <vector>

#include "platform/linux/opening/LaunchErrorTexts.h"
#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

// How much of a script's first line the kernel reads, in bytes.
constexpr std::size_t kScriptHead = 256;

// The words that follow "#!" in the first line of the script at `path`; none without "#!".
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

bool isExecutable(const ExecutableMatch& match) {
    return match.state == ExecutableMatch::State::executable;
}

// The interpreter that the script at `path` names but that does not exist; empty when there is no
// such problem.
std::string missingInterpreter(const std::string& path, const ExecutableLookup& lookup) {
    const std::vector<std::string> words = interpreterWords(path);
    if (words.empty()) {
        return {};
    }
    // The kernel takes the word for a path. A relative one starts at a working folder that is not
    // known here, so it counts as missing.
    const bool absolute = words[0].starts_with('/');
    if (!absolute || !isExecutable(lookup.find(words[0]))) {
        return words[0];
    }
    // Options and assignments are left to env(1) itself.
    const bool namesProgram = words[0].ends_with("/env") && words.size() > 1 &&
                              words[1].front() != '-' && words[1].find('=') == std::string::npos;
    return namesProgram && !isExecutable(lookup.find(words[1])) ? words[1] : std::string();
}

}  // namespace

Result<std::string> findProgram(const ExecutableLookup& lookup, const std::string& program,
                                const std::string& workingDirectory) {
    const ExecutableMatch match = lookup.find(program, workingDirectory);
    switch (match.state) {
        case ExecutableMatch::State::unreachable:
            return messages::startRefused(match.path, EACCES);
        case ExecutableMatch::State::folder:
            return messages::programIsFolder(match.path);
        case ExecutableMatch::State::notExecutable:
            return messages::programNotExecutable(match.path);
        case ExecutableMatch::State::executable:
            return match.path;
        case ExecutableMatch::State::missing:
            break;
    }
    return program.find('/') == std::string::npos
               ? messages::programNotFound(program, lookup.searchPath())
               : messages::programMissing(program);
}

Result<std::string> checkProgram(const ExecutableLookup& lookup, const std::string& program,
                                 const std::string& workingDirectory) {
    Result<std::string> found = findProgram(lookup, program, workingDirectory);
    if (found) {
        const std::string interpreter = missingInterpreter(found.value(), lookup);
        if (!interpreter.empty()) {
            return messages::interpreterMissing(found.value(), interpreter);
        }
    }
    return found;
}

}  // namespace tavo
