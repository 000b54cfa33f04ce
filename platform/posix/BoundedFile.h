// Reading small files that other programs wrote.
#pragma once

#include <cstddef>
#include <string>
#include <variant>

namespace tavo {

// Why a file was not read.
struct FileFailure {
    int code = 0;  // an errno value; EINVAL: it is no regular file, EFBIG: it is too large
};

// The bytes of the regular file at `path` (links are followed), which may have at most `limit`
// bytes. A pipe or a device is refused without waiting for it. Any thread.
std::variant<std::string, FileFailure> readBoundedFile(const std::string& path, std::size_t limit);

// At most the first `count` bytes of the regular file at `path`; "" when it cannot be read. Any
// thread.
std::string readFileHead(const std::string& path, std::size_t count);

}  // namespace tavo
