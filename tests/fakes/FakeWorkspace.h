// A workspace that opens nothing: a test says what lies where, sees what was to be opened, and
// delivers each completion itself.
#pragma once

#include <functional>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/Workspace.h"

namespace tavo {

class FakeWorkspace final : public Workspace {
public:
    struct Opening {
        std::string path;
        bool activates = true;
        OpenCompletion completion;  // empty once delivered
    };

    // Called first thing in each call of the port, so that a test can see what came before it.
    std::function<void()> onCall = [] {};

    std::optional<BundleFacts> bundle(const std::string& path) override {
        onCall();
        const auto found = bundles.find(path);
        return found == bundles.end() ? std::nullopt : std::optional(found->second);
    }

    void openApplication(const std::string& path, OpenConfiguration configuration,
                         OpenCompletion completion) override {
        onCall();
        openings.push_back({path, configuration.activates, std::move(completion)});
    }

    // Calls the completion of the opening at `index`. A second call for the same opening is a
    // mistake of the test, and throws.
    void complete(std::size_t index, std::optional<RunningApplication> running,
                  std::optional<Error> error) {
        const OpenCompletion completion =
            std::exchange(openings.at(index).completion, OpenCompletion());
        if (!completion) {
            throw std::logic_error("a completion was delivered twice");
        }
        completion(std::move(running), std::move(error));
    }

    std::map<std::string, BundleFacts> bundles;  // by path
    std::vector<Opening> openings;               // all so far, the oldest first
};

}  // namespace tavo
