#include "platform/posix/BoundedFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

// Up to `count` bytes from the start. Sets `failure` to the errno value of a read that failed.
std::string readUpTo(const FileDescriptor& file, std::size_t count, int& failure) {
    std::string bytes;
    while (bytes.size() < count) {
        char block[16384];
        const ssize_t got = ::read(file.get(), block, std::min(sizeof block, count - bytes.size()));
        if (got > 0) {
            bytes.append(block, static_cast<std::size_t>(got));
        } else if (got == 0) {
            break;
        } else if (errno != EINTR) {
            failure = errno;
            break;
        }
    }
    return bytes;
}

// O_NONBLOCK: opening a pipe would otherwise wait for a writer.
FileDescriptor openRegularFile(const std::string& path, struct stat& status, int& failure) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.valid() || ::fstat(file.get(), &status) != 0) {
        failure = errno;
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        failure = EINVAL;
        return {};
    }
    return file;
}

}  // namespace

std::variant<std::string, FileFailure> readBoundedFile(const std::string& path, std::size_t limit) {
    struct stat status = {};
    int failure = 0;
    const FileDescriptor file = openRegularFile(path, status, failure);
    if (!file.valid()) {
        return FileFailure{failure};
    }
    if (static_cast<std::size_t>(status.st_size) > limit) {
        return FileFailure{EFBIG};
    }
    // Reads one byte more than allowed, to notice a file that grows meanwhile.
    std::string bytes = readUpTo(file, limit + 1, failure);
    if (failure == 0 && bytes.size() > limit) {
        failure = EFBIG;
    }
    if (failure != 0) {
        return FileFailure{failure};
    }
    return bytes;
}

std::string readFileHead(const std::string& path, std::size_t count) {
    struct stat status = {};
    int failure = 0;
    const FileDescriptor file = openRegularFile(path, status, failure);
    return file.valid() ? readUpTo(file, count, failure) : std::string();
}

}  // namespace tavo
