// A launcher without a window for tests, some of which kill it: opens what it is told, and says
// what came of it.
//
// For each line of standard input it prints one line. A path of an application is opened: the
// answer is the PID of the started process, 0 when none runs, or -1 after an error. "open" and a
// web address open the application that is associated with the address, with the same answer. An
// empty line is answered with the number of open descriptors and the number of children that are
// zombies.
#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <mutex>
#include <optional>
#include <string>

#include <unistd.h>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/opening/LinuxWorkspace.h"
#include "platform/linux/opening/UrlAssociation.h"

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

// A main queue whose runNext() waits for the next block.
class WaitingQueue final : public tavo::MainQueue {
public:
    void async(std::function<void()> block) override {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
        changed_.notify_one();
    }

    // Drops the block: no test of this program needs one that is due later.
    void asyncAfter(std::chrono::milliseconds /*delay*/, std::function<void()> /*block*/) override {
    }

    void runNext() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !blocks_.empty(); });
        const std::function<void()> block = std::move(blocks_.front());
        blocks_.pop_front();
        lock.unlock();
        block();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
};

}  // namespace

int main() {
    WaitingQueue queue;
    tavo::SessionBus bus(tavo::sessionBusAddress());
    tavo::OpeningSettings settings{.mainQueue = queue,
                                   .environment = tavo::StartEnvironment::capture(),
                                   .bus = bus,
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
        tavo::OpenConfiguration configuration;
        if (path.starts_with("open ")) {
            configuration.address = path.substr(5);
            path = tavo::applicationForAddress(configuration.address);
        }
        std::optional<int> answer;
        workspace->openApplication(
            path, configuration,
            [&answer](const std::optional<tavo::RunningApplication>& running,
                      const std::optional<tavo::Error>& error) {
                answer = error ? -1 : running ? running->processIdentifier : 0;
            });
        while (!answer) {
            queue.runNext();
        }
        std::cout << *answer << std::endl;
    }
}
