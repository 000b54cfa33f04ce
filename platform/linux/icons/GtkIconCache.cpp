#include "platform/linux/icons/GtkIconCache.h"

#include <array>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavo {
namespace {

// All numbers in the file are big-endian; offsets count from the start of the file.
constexpr std::uint64_t kHashAt = 4;
constexpr std::uint64_t kSubfoldersAt = 8;
constexpr std::uint32_t kNone = 0xffffffffU;
constexpr std::uint32_t kMostSubfolders = 8192;
constexpr std::uint32_t kLongestChain = 4096;

std::uint32_t hashOf(std::string_view name) {
    std::uint32_t hash = 0;
    for (const char character : name) {
        hash = hash * 31U + static_cast<std::uint32_t>(static_cast<signed char>(character));
    }
    return hash;
}

bool readExactly(const FileDescriptor& file, void* bytes, std::size_t count, std::uint64_t offset) {
    return ::pread(file.get(), bytes, count, static_cast<off_t>(offset)) ==
           static_cast<ssize_t>(count);
}

}  // namespace

std::optional<GtkIconCache> GtkIconCache::open(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status = {};
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    GtkIconCache cache(std::move(file));
    if (cache.number16(0) != 1 || cache.number16(2) != 0 || !cache.readSubfolders()) {
        return std::nullopt;
    }
    return cache;
}

bool GtkIconCache::readSubfolders() {
    const std::uint64_t list = number32(kSubfoldersAt).value_or(0);
    const std::uint32_t count = number32(list).value_or(kNone);
    if (list == 0 || count > kMostSubfolders) {
        return false;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto at = number32(list + 4 + std::uint64_t{4} * i);
        if (!at) {
            return false;
        }
        subfolders_.push_back(text(*at));
    }
    return true;
}

std::vector<GtkIconCache::Image> GtkIconCache::images(std::string_view name) const {
    const std::uint64_t hash = number32(kHashAt).value_or(0);
    const std::uint32_t buckets = number32(hash).value_or(0);
    if (hash == 0 || buckets == 0) {
        return {};
    }
    auto entry = number32(hash + 4 + std::uint64_t{4} * (hashOf(name) % buckets));
    for (std::uint32_t i = 0; i < kLongestChain && entry && *entry != kNone; ++i) {
        const auto nameAt = number32(std::uint64_t{*entry} + 4);
        const auto imagesAt = number32(std::uint64_t{*entry} + 8);
        if (nameAt && imagesAt && text(*nameAt) == name) {
            return imageList(*imagesAt);
        }
        entry = number32(*entry);
    }
    return {};
}

std::vector<GtkIconCache::Image> GtkIconCache::imageList(std::uint64_t offset) const {
    std::vector<Image> list;
    const std::uint32_t count = number32(offset).value_or(0);
    for (std::uint32_t i = 0; i < count && i < kMostSubfolders; ++i) {
        const std::uint64_t at = offset + 4 + std::uint64_t{8} * i;
        const auto subfolder = number16(at);
        const auto suffixes = number16(at + 2);
        if (!subfolder || !suffixes) {
            break;
        }
        if (*subfolder < subfolders_.size()) {
            list.push_back({*subfolder, *suffixes});
        }
    }
    return list;
}

std::optional<std::uint16_t> GtkIconCache::number16(std::uint64_t offset) const {
    std::array<std::uint8_t, 2> bytes = {};
    if (!readExactly(file_, bytes.data(), bytes.size(), offset)) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(bytes[0] << 8U | bytes[1]);
}

std::optional<std::uint32_t> GtkIconCache::number32(std::uint64_t offset) const {
    std::array<std::uint8_t, 4> bytes = {};
    if (!readExactly(file_, bytes.data(), bytes.size(), offset)) {
        return std::nullopt;
    }
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
           std::uint32_t{bytes[2]} << 8U | bytes[3];
}

// The text at `offset`, which ends with a NUL; cut off after 255 bytes, the longest file name.
std::string GtkIconCache::text(std::uint64_t offset) const {
    std::array<char, 256> bytes = {};
    const ssize_t got =
        ::pread(file_.get(), bytes.data(), bytes.size() - 1, static_cast<off_t>(offset));
    return got > 0 ? std::string(bytes.data()) : std::string();
}

}  // namespace tavo
