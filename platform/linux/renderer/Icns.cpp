#include "platform/linux/renderer/Icns.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <tuple>

namespace tavo {
namespace {

// Chunk types whose content may be a PNG file, each for pictures of one size in pixels.
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

constexpr std::string_view kPngStart = "\x89PNG\r\n\x1a\n";
constexpr std::size_t kHeader = 8;
constexpr std::size_t kMostChunks = 256;

struct Chunk {
    std::string_view type;
    std::string_view content;
};

// The length of the chunk, or of the file, at the start of `bytes`: the big-endian number after the
// type.
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

}  // namespace

std::vector<IcnsPicture> icnsPictures(std::string_view bytes, int side) {
    std::vector<IcnsPicture> pictures;
    for (const Chunk& chunk : chunksOf(bytes)) {
        const auto png = std::ranges::find(kPngTypes, chunk.type, &PngType::type);
        if (png != kPngTypes.end() && chunk.content.starts_with(kPngStart)) {
            pictures.push_back({png->side, chunk.content});
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
