// Running applications as a test lists them.
#pragma once

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/RunningApplications.h"

namespace tavo {

class FakeRunningApplications final : public RunningApplications {
public:
    struct Known {
        RunningApplication application;
        std::optional<std::string> executablePath;
    };

    void noteUserRequest(const std::string& identifier) override {
        userRequests.push_back(identifier);
    }

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

    bool listsWindows() override { return lists; }

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
        windowsAsked.push_back(application);
        return std::any_of(running.begin(), running.end(), [&](const Known& known) {
            return (!application.identifier.empty() &&
                    known.application.identifier == application.identifier) ||
                   (application.processIdentifier != 0 &&
                    known.application.processIdentifier == application.processIdentifier);
        });
    }

    Subscription onWindowsChanged(std::function<void()> changed) override {
        auto subscriber = std::make_shared<std::function<void()>>(std::move(changed));
        subscribers_.push_back(subscriber);
        return Subscription(std::move(subscriber));
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
        activated_.push_back(application);
    }

    // All activations so far, the oldest first.
    [[nodiscard]] const std::vector<RunningApplication>& activated() const { return activated_; }

    // Tells all subscribers that windows have changed.
    void announceWindows() {
        for (const auto& subscriber : subscribers()) {
            (*subscriber)();
        }
    }
    [[nodiscard]] bool isSubscribedTo() const { return !subscribers().empty(); }

    bool lists = true;           // what listsWindows() answers
    std::vector<Known> running;  // in the order in which they are answered

    // What the functions of the port were called with so far, the oldest call first.
    std::vector<std::string> userRequests;
    std::vector<std::string> identifiersAsked;
    std::vector<std::int32_t> processesAsked;
    std::vector<RunningApplication> windowsAsked;

private:
    using Subscriber = std::function<void()>;

    [[nodiscard]] std::vector<std::shared_ptr<Subscriber>> subscribers() const {
        std::vector<std::shared_ptr<Subscriber>> alive;
        for (const auto& subscriber : subscribers_) {
            if (auto held = subscriber.lock()) {
                alive.push_back(std::move(held));
            }
        }
        return alive;
    }

    std::vector<RunningApplication> activated_;
    std::vector<std::weak_ptr<Subscriber>> subscribers_;
};

}  // namespace tavo
