#include "platform/linux/bundles/Icns.h"

#include <algorithm>
#include <array>
#include <optional>
#include <tuple>

namespace tavo {
namespace {

struct PngType {
    std::string_view type;
    int side;
};
constexpr std::array<PngType, 11> kPngTypes = {{
    {"icp4", 16},
    {"icp5", 32},
    {"icp6", 64},
    {"ic07", 128},
    {"ic08", 256},
    {"ic09", 512},
    {"ic10", 1024},
    {"ic11", 32},
    {"ic12", 64},
    {"ic13", 256},
    {"ic14", 512},
}};

struct PackedType {
    std::string_view type;
    std::string_view mask;
    int side;
    std::size_t prefix;  // bytes before the colours
};
constexpr std::array<PackedType, 4> kPackedTypes = {{
    {"is32", "s8mk", 16, 0},
    {"il32", "l8mk", 32, 0},
    {"ih32", "h8mk", 48, 0},
    {"it32", "t8mk", 128, 4},
}};

constexpr std::string_view kPngStart = "\x89PNG\r\n\x1a\n";
constexpr std::size_t kHeader = 8;
constexpr std::size_t kMostChunks = 256;

struct Chunk {
    std::string_view type;
    std::string_view content;
};

std::size_t length(std::string_view bytes) {
    std::size_t number = 0;
    for (const char byte : bytes.substr(4, 4)) {
        number = number << 8U | static_cast<std::uint8_t>(byte);
    }
    return number;
}

std::vector<Chunk> chunksOf(std::string_view bytes) {
    std::vector<Chunk> chunks;
    if (bytes.size() < kHeader || !bytes.starts_with("icns")) {
        return chunks;
    }
    bytes = bytes.substr(0, length(bytes));
    bytes.remove_prefix(std::min(kHeader, bytes.size()));
    while (bytes.size() >= kHeader && chunks.size() < kMostChunks) {
        const std::size_t size = length(bytes);
        if (size < kHeader || size > bytes.size()) {
            break;
        }
        chunks.push_back({bytes.substr(0, 4), bytes.substr(kHeader, size - kHeader)});
        bytes.remove_prefix(size);
    }
    return chunks;
}

// One byte for each of `count` pixels, taken off the front: a byte below 128 is followed by that
// many bytes and one more, another stands for its value less 125 times the byte that follows.
// Absent when the bytes end before.
std::optional<std::vector<std::uint8_t>> unpacked(std::string_view& bytes, std::size_t count) {
    std::vector<std::uint8_t> plane;
    plane.reserve(count);
    while (plane.size() < count && bytes.size() >= 2) {
        const auto control = static_cast<std::uint8_t>(bytes.front());
        bytes.remove_prefix(1);
        const std::size_t left = count - plane.size();
        if (control >= 128) {
            plane.insert(plane.end(), std::min<std::size_t>(control - 125U, left),
                         static_cast<std::uint8_t>(bytes.front()));
            bytes.remove_prefix(1);
        } else {
            const std::size_t run = std::min({control + std::size_t{1}, bytes.size(), left});
            plane.insert(plane.end(), bytes.begin(),
                         bytes.begin() + static_cast<std::ptrdiff_t>(run));
            bytes.remove_prefix(run);
        }
    }
    if (plane.size() != count) {
        return std::nullopt;
    }
    return plane;
}

// Red, green and blue one after the other; without a mask everything is opaque.
std::optional<IcnsPicture> packedPicture(const PackedType& type, std::string_view colours,
                                         std::string_view mask) {
    const std::size_t count =
        static_cast<std::size_t>(type.side) * static_cast<std::size_t>(type.side);
    colours.remove_prefix(std::min(type.prefix, colours.size()));
    IcnsPicture picture{type.side, {}, std::vector<std::uint32_t>(count, 0)};
    for (const unsigned shift : {16U, 8U, 0U}) {
        const auto plane = unpacked(colours, count);
        if (!plane) {
            return std::nullopt;
        }
        for (std::size_t i = 0; i < count; ++i) {
            picture.pixels[i] |= std::uint32_t{(*plane)[i]} << shift;
        }
    }
    const bool masked = mask.size() == count;
    for (std::size_t i = 0; i < count; ++i) {
        picture.pixels[i] |= (masked ? std::uint32_t{static_cast<std::uint8_t>(mask[i])} : 255U)
                             << 24U;
    }
    return picture;
}

std::optional<IcnsPicture> pictureFrom(const Chunk& chunk, const std::vector<Chunk>& chunks) {
    const auto png = std::ranges::find(kPngTypes, chunk.type, &PngType::type);
    if (png != kPngTypes.end() && chunk.content.starts_with(kPngStart)) {
        return IcnsPicture{png->side, chunk.content, {}};
    }
    const auto packed = std::ranges::find(kPackedTypes, chunk.type, &PackedType::type);
    if (packed == kPackedTypes.end()) {
        return std::nullopt;
    }
    const auto mask = std::ranges::find(chunks, packed->mask, &Chunk::type);
    return packedPicture(*packed, chunk.content,
                         mask == chunks.end() ? std::string_view() : mask->content);
}

}  // namespace

std::vector<IcnsPicture> icnsPictures(std::string_view bytes, int side) {
    const std::vector<Chunk> chunks = chunksOf(bytes);
    std::vector<IcnsPicture> pictures;
    for (const Chunk& chunk : chunks) {
        if (auto picture = pictureFrom(chunk, chunks)) {
            pictures.push_back(std::move(*picture));
        }
    }
    const auto rank = [side](const IcnsPicture& picture) {
        const bool smaller = picture.side < side;
        return std::tuple(smaller, smaller ? side - picture.side : picture.side);
    };
    std::ranges::stable_sort(pictures, {}, rank);
    return pictures;
}

}  // namespace tavo
