#include "platform/linux/icons/RenderedIconCache.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <numeric>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "platform/linux/system/StableHash.h"
#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

// Stands for the format of the file. A file from a machine with the other byte order, or from a
// version that drew icons differently, has another number and is ignored.
constexpr std::uint32_t kMagic = 0x54764902;
constexpr std::size_t kLongestPath = 4096;
constexpr int kLargestSide = 4096;

// A file holds this header, the key, the pixels, and the path that the icon was made from.
struct Header {
    std::uint32_t magic = kMagic;
    std::int32_t side = 0;
    std::uint32_t keyLength = 0;
    std::uint32_t fileLength = 0;
    std::int64_t modified = 0;
    std::int64_t size = 0;
    std::uint64_t lookup = 0;
    std::uint64_t checksum = 0;  // of stamp, lookup, pixels and path
};
static_assert(sizeof(Header) == 48);

std::uint64_t checksumOf(const Header& header, const std::vector<std::uint32_t>& pixels,
                         std::string_view file) {
    StableHash sum;
    sum.add(static_cast<std::uint64_t>(header.modified));
    sum.add(static_cast<std::uint64_t>(header.size));
    sum.add(header.lookup);
    sum.add(file);
    sum.add(std::string_view(reinterpret_cast<const char*>(pixels.data()),
                             pixels.size() * sizeof pixels[0]));
    return sum.value();
}

template<std::size_t N>
std::size_t total(const std::array<iovec, N>& parts) {
    return std::accumulate(parts.begin(), parts.end(), std::size_t{0},
                           [](std::size_t sum, const iovec& part) { return sum + part.iov_len; });
}

FileDescriptor createFile(const std::string& path) {
    return FileDescriptor(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
}

void makeFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        ::mkdir(path.substr(0, slash).c_str(), 0700);
    }
    ::mkdir(path.c_str(), 0700);
}

std::size_t pixelCount(int side) {
    return static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
}

}  // namespace

std::string RenderedIconCache::path(std::string_view key) const {
    StableHash fingerprint;
    fingerprint.add(key);
    std::array<char, 20> name = {};
    std::snprintf(name.data(), name.size(), "/%016llx",
                  static_cast<unsigned long long>(fingerprint.value()));
    return folder_ + name.data();
}

std::optional<RenderedIcon> RenderedIconCache::read(std::string_view key, int side) const {
    if (folder_.empty() || side <= 0 || side > kLargestSide || key.size() > kLongestPath) {
        return std::nullopt;
    }
    const FileDescriptor file(
        ::open(path(key).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.valid()) {
        return std::nullopt;
    }
    Header header;
    RenderedIcon icon;
    icon.image = {side, std::vector<std::uint32_t>(pixelCount(side))};
    std::array<char, kLongestPath> keyRead;
    std::array<char, kLongestPath> fileRead;
    const std::array<iovec, 4> parts = {{
        {&header, sizeof header},
        {keyRead.data(), key.size()},
        {icon.image.pixels.data(), icon.image.pixels.size() * sizeof(std::uint32_t)},
        {fileRead.data(), fileRead.size()},
    }};
    const ssize_t got = ::readv(file.get(), parts.data(), static_cast<int>(parts.size()));
    if (got < static_cast<ssize_t>(sizeof header) || header.magic != kMagic ||
        header.side != side || header.keyLength != key.size() ||
        header.fileLength > fileRead.size() ||
        static_cast<std::size_t>(got) != total(parts) - fileRead.size() + header.fileLength) {
        return std::nullopt;
    }
    icon.file.assign(fileRead.data(), header.fileLength);
    icon.stamp = {header.modified, header.size};
    icon.lookup = header.lookup;
    if (std::string_view(keyRead.data(), key.size()) != key ||
        checksumOf(header, icon.image.pixels, icon.file) != header.checksum) {
        return std::nullopt;
    }
    return icon;
}

void RenderedIconCache::write(std::string_view key, const RenderedIcon& icon) {
    if (folder_.empty() || icon.image.side > kLargestSide || key.size() > kLongestPath ||
        icon.file.size() > kLongestPath) {
        return;
    }
    const unsigned number = writes_++;
    Header header;
    header.side = icon.image.side;
    header.keyLength = static_cast<std::uint32_t>(key.size());
    header.fileLength = static_cast<std::uint32_t>(icon.file.size());
    header.modified = icon.stamp.modified;
    header.size = icon.stamp.size;
    header.lookup = icon.lookup;
    header.checksum = checksumOf(header, icon.image.pixels, icon.file);
    const std::array<iovec, 4> parts = {{
        {&header, sizeof header},
        {const_cast<char*>(key.data()), key.size()},
        {const_cast<std::uint32_t*>(icon.image.pixels.data()),
         icon.image.pixels.size() * sizeof(std::uint32_t)},
        {const_cast<char*>(icon.file.data()), icon.file.size()},
    }};
    const std::string target = path(key);
    const std::string fresh =
        target + "." + std::to_string(::getpid()) + "." + std::to_string(number);
    FileDescriptor file = createFile(fresh);
    if (!file.valid() && errno == ENOENT) {
        makeFolders(folder_);
        file = createFile(fresh);
    }
    if (!file.valid()) {
        return;
    }
    const ssize_t put = ::writev(file.get(), parts.data(), static_cast<int>(parts.size()));
    if (put != static_cast<ssize_t>(total(parts)) || ::rename(fresh.c_str(), target.c_str()) != 0) {
        ::unlink(fresh.c_str());
        return;
    }
    // To count the files costs more than to write one, so this is done at one write in 256.
    constexpr unsigned kOften = 256;
    if (number % kOften == 0) {
        trim();
    }
}

// Removes the oldest files down to three quarters of a limit that is exceeded, so that the next
// file does not exceed it again. Other processes may do so at the same time: a file that is already
// gone is no failure.
void RenderedIconCache::trim() {
    struct File {
        std::string name;
        FileStamp stamp;
    };
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(folder_.c_str()), &::closedir);
    if (!stream) {
        return;
    }
    std::vector<File> files;
    std::uint64_t bytes = 0;
    while (const dirent* const entry = ::readdir(stream.get())) {
        if (entry->d_name[0] != '.') {
            files.push_back({entry->d_name, fileStamp(::dirfd(stream.get()), entry->d_name)});
            bytes += static_cast<std::uint64_t>(std::max<std::int64_t>(files.back().stamp.size, 0));
        }
    }
    if (files.size() <= limits_.files && bytes <= limits_.bytes) {
        return;
    }
    std::ranges::sort(files, {}, [](const File& file) { return file.stamp.modified; });
    std::size_t left = files.size();
    for (const File& file : files) {
        if (left <= limits_.files / 4 * 3 && bytes <= limits_.bytes / 4 * 3) {
            break;
        }
        ::unlinkat(::dirfd(stream.get()), file.name.c_str(), 0);
        --left;
        bytes -= static_cast<std::uint64_t>(std::max<std::int64_t>(file.stamp.size, 0));
    }
}

}  // namespace tavo
