#include "platform/linux/system/FileStamp.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace tavo {

FileStamp fileStamp(const std::string& path) {
    return fileStamp(AT_FDCWD, path.c_str());
}

FileStamp fileStamp(int folder, const char* path) {
    struct stat status = {};
    if (::fstatat(folder, path, &status, 0) != 0) {
        return {};
    }
    return {std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec,
            status.st_size};
}

}  // namespace tavo
