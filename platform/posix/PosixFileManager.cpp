#include "platform/posix/PosixFileManager.h"

#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <pwd.h>
#include <unistd.h>

namespace tavo {
namespace {

class PosixFileManager final : public FileManager {
public:
    std::optional<std::vector<std::string>> contentsOfDirectory(
        const std::string& folder) const override {
        DIR* const stream = opendir(folder.c_str());
        if (stream == nullptr) {
            return std::nullopt;
        }
        std::vector<std::string> names;
        while (const dirent* const entry = readdir(stream)) {
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
                names.emplace_back(entry->d_name);
            }
        }
        closedir(stream);
        return names;
    }

    std::string homeDirectory() const override {
        std::string home;
        if (const char* const variable = std::getenv("HOME");
            variable != nullptr && *variable == '/') {
            home = variable;
        } else if (const passwd* const user = getpwuid(getuid()); user != nullptr) {
            home = user->pw_dir;
        }
        while (home.size() > 1 && home.back() == '/') {
            home.pop_back();
        }
        return home;
    }
};

}  // namespace

std::unique_ptr<FileManager> makePosixFileManager() {
    return std::make_unique<PosixFileManager>();
}

}  // namespace tavo
