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

// applications() may be called on any thread, one call at a time; it returns when the scan is done.
// The first call may return a scan that had already begun; each later call scans again. The answer
// is in no order and has each path once.
class ApplicationSource {
public:
    virtual ~ApplicationSource() = default;

    [[nodiscard]] virtual std::vector<FoundApplication> applications() = 0;
};

}  // namespace tavo
