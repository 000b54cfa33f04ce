// Opens applications in the system's own way, and reads facts about them.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/RunningApplications.h"
#include "support/Result.h"

namespace tavo {

struct BundleFacts {
    std::optional<std::string> identifier;
    std::optional<std::string> signature;  // Info.plist "CFBundleSignature", when it is a string
    std::optional<std::string> executablePath;

    bool operator==(const BundleFacts&) const = default;
};

struct OpenConfiguration {
    bool activates = true;     // whether the started application is brought to the front
    std::string address = {};  // what it is to open: a web address; empty: nothing
};

using OpenCompletion = std::function<void(std::optional<RunningApplication>, std::optional<Error>)>;

class Workspace {
public:
    virtual ~Workspace() = default;

    // Facts about the bundle or the desktop entry at `path`; absent when there is neither. Main
    // thread; returns at once.
    [[nodiscard]] virtual std::optional<BundleFacts> bundle(const std::string& path) = 0;

    // Main thread; returns at once. `completion` is called once, later, on the main thread; not at
    // all when the workspace is destroyed before. An error's message is a complete text to show to
    // the user. What it quotes from the system may be in another language.
    virtual void openApplication(const std::string& path, OpenConfiguration configuration,
                                 OpenCompletion completion) = 0;
};

}  // namespace tavo
