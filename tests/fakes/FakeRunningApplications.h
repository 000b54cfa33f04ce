// Running applications as a test lists them.
#pragma once

#include <algorithm>
#include <mutex>

#include "platform/RunningApplications.h"

namespace tavo {

class FakeRunningApplications final : public RunningApplications {
public:
    struct Known {
        RunningApplication application;
        std::optional<std::string> executablePath;
    };

    std::vector<RunningApplication> withIdentifier(const std::string& identifier) override {
        identifiersAsked.push_back(identifier);
        std::vector<RunningApplication> found;
        for (const Known& known : running) {
            if (!identifier.empty() && known.application.identifier == identifier) {
                found.push_back(known.application);
            }
        }
        return found;
    }

    std::optional<RunningApplication> withProcess(std::int32_t processIdentifier) override {
        processesAsked.push_back(processIdentifier);
        for (const Known& known : running) {
            if (known.application.processIdentifier == processIdentifier) {
                return known.application;
            }
        }
        return std::nullopt;
    }

    bool showsWindow(const RunningApplication& application) override {
        return std::any_of(running.begin(), running.end(), [&](const Known& known) {
            return (!application.identifier.empty() &&
                    known.application.identifier == application.identifier) ||
                   (application.processIdentifier != 0 &&
                    known.application.processIdentifier == application.processIdentifier);
        });
    }

    std::optional<std::string> executablePath(const RunningApplication& application) override {
        for (const Known& known : running) {
            if (known.application == application) {
                return known.executablePath;
            }
        }
        return std::nullopt;
    }

    void activateAllWindows(const RunningApplication& application) override {
        const std::lock_guard lock(mutex_);
        activated_.push_back(application);
    }

    // All so far, the oldest first.
    [[nodiscard]] std::vector<RunningApplication> activated() const {
        const std::lock_guard lock(mutex_);
        return activated_;
    }

    std::vector<Known> running;  // in the system's order

    // What was looked up so far.
    std::vector<std::string> identifiersAsked;
    std::vector<std::int32_t> processesAsked;

private:
    mutable std::mutex mutex_;
    std::vector<RunningApplication> activated_;  // from any thread
};

}  // namespace tavo
