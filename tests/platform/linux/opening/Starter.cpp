// A launcher to be killed, for tests: opens what it is told and says how that went.
//
// For each line of standard input, the path of an application, one line of standard output: the
// started process, 0 when nothing runs, or -1 after an error. For an empty line, how many
// descriptors are open and how many of its children are zombies.
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>
#include <string>

#include <unistd.h>

#include "platform/linux/opening/LinuxWorkspace.h"

namespace {

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// Counted as ps(1) does: by state and parent in /proc/PID/stat.
int zombies() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "stat");
        std::string line;
        if (std::getline(file, line)) {
            const std::string rest = line.substr(line.rfind(')') + 2);
            count += rest.starts_with("Z " + std::to_string(::getpid()) + ' ') ? 1 : 0;
        }
    }
    return count;
}

}  // namespace

int main() {
    tavo::OpeningSettings settings{.environment = tavo::StartEnvironment::capture(),
                                   .applicationFolders = {},
                                   .userTime = {},
                                   .patience = std::chrono::milliseconds(1),
                                   .startingTime = std::chrono::milliseconds(0)};
    const auto workspace = tavo::makeLinuxWorkspace(std::move(settings));
    for (std::string path; std::getline(std::cin, path);) {
        if (path.empty()) {
            std::cout << openDescriptors() << ' ' << zombies() << std::endl;
            continue;
        }
        std::promise<int> answer;
        workspace->openApplication(
            path, {},
            [&answer](const std::optional<tavo::RunningApplication>& running,
                      const std::optional<tavo::Error>& error) {
                answer.set_value(error ? -1 : running ? running->processIdentifier : 0);
            });
        std::cout << answer.get_future().get() << std::endl;
    }
}
