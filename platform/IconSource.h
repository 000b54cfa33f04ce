// Pictures of applications.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavo {

// Premultiplied ARGB, one 32-bit word a pixel in the machine's own byte order, rows without
// padding, the top row first. Square.
struct IconImage {
    int side = 0;  // pixels
    std::vector<std::uint32_t> pixels;

    bool operator==(const IconImage&) const = default;
};

// Any thread, several at once.
class IconSource {
public:
    virtual ~IconSource() = default;

    // The icon of the application at `path`, `size` logical pixels at `scale`. Never empty: what
    // has no icon of its own, or one that cannot be read, gets the generic one. Reads files, and
    // so takes milliseconds, or for ever where a disk does not answer.
    [[nodiscard]] virtual IconImage icon(const std::string& path, int size, double scale) = 0;

    // An icon for what has none, of the same size. Reads no file.
    [[nodiscard]] virtual IconImage genericIcon(int size, double scale) = 0;

    // Icons may have come, gone or changed: what is known of them is looked at anew with the next
    // one asked for. Until it is called, changes need not be seen. Returns at once.
    virtual void refresh() = 0;

    // No icon was asked for in a while: lets go of what serves only to draw them, until the next
    // one is asked for.
    virtual void rest() = 0;
};

}  // namespace tavo
