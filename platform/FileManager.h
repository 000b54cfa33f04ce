// Folders, as far as finding application bundles needs them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tavo {

// Main thread; answers at once. Paths are the exact bytes that the system uses.
class FileManager {
public:
    virtual ~FileManager() = default;

    // The names of the direct entries of `folder`, hidden ones included, without "." and "..", in
    // no order. Absent when the folder cannot be listed, for whatever reason.
    [[nodiscard]] virtual std::optional<std::vector<std::string>> contentsOfDirectory(
        const std::string& folder) const = 0;

    // The current user's home folder, without a trailing slash.
    [[nodiscard]] virtual std::string homeDirectory() const = 0;
};

}  // namespace tavo
