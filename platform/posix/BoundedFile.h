// Reading small files that somebody else wrote.
#pragma once

#include <cstddef>
#include <string>
#include <variant>

namespace tavo {

// Why a file was not read: `code` is an errno value. EINVAL: it is no regular file (a pipe, a
// device or a folder is never waited for), EFBIG: it is larger than allowed.
struct FileFailure {
    int code = 0;
};

// The bytes of the regular file at `path` (links followed), at most `limit` of them. Any thread.
std::variant<std::string, FileFailure> readBoundedFile(const std::string& path, std::size_t limit);

// The first bytes of the regular file at `path`, at most `count`; fewer when the file is shorter,
// none when it cannot be read.
std::string readFileHead(const std::string& path, std::size_t count);

}  // namespace tavo
