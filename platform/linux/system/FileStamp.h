// What tells that a file is still the one it was.
#pragma once

#include <cstdint>
#include <string>

namespace tavo {

// A value; the default one is that of a file that does not exist.
struct FileStamp {
    std::int64_t modified = -1;  // nanoseconds since the epoch
    std::int64_t size = -1;      // bytes

    [[nodiscard]] bool exists() const { return size >= 0; }
    bool operator==(const FileStamp&) const = default;
};

// Links are followed. `path` may be relative to the open folder `folder`. Any thread.
FileStamp fileStamp(const std::string& path);
FileStamp fileStamp(int folder, const char* path);

}  // namespace tavo
