// Size and modification time of a file, to notice that it has changed.
#pragma once

#include <cstdint>
#include <string>

namespace tavo {

// The default value is that of a file that does not exist.
struct FileStamp {
    std::int64_t modified = -1;  // nanoseconds since the epoch
    std::int64_t size = -1;      // bytes

    [[nodiscard]] bool exists() const { return size >= 0; }
    bool operator==(const FileStamp&) const = default;
};

// Links are followed. A relative `path` starts at the open folder `folder`. A file that cannot be
// reached has the stamp of one that does not exist. Any thread.
FileStamp fileStamp(const std::string& path);
FileStamp fileStamp(int folder, const char* path);

}  // namespace tavo
