// Installed applications beyond the bundles of the four folders: on Linux, desktop entries.
#pragma once

#include <string>
#include <vector>

namespace tavo {

// `path` identifies the application in everything that is stored: the exact bytes of the file's
// name, always UTF-8. `name` is what the user reads, UTF-8.
struct FoundApplication {
    std::string name;
    std::string path;

    bool operator==(const FoundApplication&) const = default;
};

// One call at a time, on any thread; answers when the scan is done. The first answer may be from a
// scan already begun; each later call looks anew. In no order, each path once.
class ApplicationSource {
public:
    virtual ~ApplicationSource() = default;

    [[nodiscard]] virtual std::vector<FoundApplication> applications() = 0;
};

}  // namespace tavo
