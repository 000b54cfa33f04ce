// Folders that exist only in a test.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileManager.h"

namespace tavo {

// Knows only the folders that the test has set.
class FakeFileManager final : public FileManager {
public:
    std::string home = "/home/user";

    // Names in the order in which they are to be listed. Also makes an unreadable folder readable.
    void setFolder(const std::string& folder, std::vector<std::string> names) {
        folders_[folder] = std::move(names);
    }
    void setUnreadable(const std::string& folder) { folders_[folder] = std::nullopt; }
    void remove(const std::string& folder) { folders_.erase(folder); }

    std::optional<std::vector<std::string>> contentsOfDirectory(
        const std::string& folder) const override {
        const auto found = folders_.find(folder);
        return found == folders_.end() ? std::nullopt : found->second;
    }

    std::string homeDirectory() const override { return home; }

private:
    std::map<std::string, std::optional<std::vector<std::string>>> folders_;
};

}  // namespace tavo
