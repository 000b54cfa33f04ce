// The system's way of opening an application, and the facts it reads from one.
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

    // Main thread; answers at once. Absent when nothing at `path` is a bundle or an entry.
    [[nodiscard]] virtual std::optional<BundleFacts> bundle(const std::string& path) = 0;

    // Main thread; returns at once. `completion` is called once, later, on the main thread; not at
    // all when the workspace ends before.
    // An error's message is complete, plain, and in the user's language where the system's is.
    virtual void openApplication(const std::string& path, OpenConfiguration configuration,
                                 OpenCompletion completion) = 0;
};

}  // namespace tavo
