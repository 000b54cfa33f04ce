// An empty folder for one test, gone with everything in it when the test ends.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tavo {

class TemporaryFolder {
public:
    explicit TemporaryFolder(
        const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string pattern = (parent / "tavo-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder can be made");
        }
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        // A test may have left folders without the permission to empty them.
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(
                 path_, std::filesystem::directory_options::skip_permission_denied, ignored)) {
            if (entry.is_directory(ignored) && !entry.is_symlink(ignored)) {
                std::filesystem::permissions(entry, std::filesystem::perms::owner_all, ignored);
            }
        }
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::string operator/(const std::string& name) const {
        return (path_ / name).string();
    }

private:
    std::filesystem::path path_;
};

}  // namespace tavo
