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

// All functions may be called on any thread, also at the same time.
class IconSource {
public:
    virtual ~IconSource() = default;

    // The icon of the application at `path`, `size` logical pixels at `scale`. Never empty: without
    // an icon that can be read, it is the generic one. Reads files, so it takes milliseconds, or
    // for ever where a disk does not answer.
    [[nodiscard]] virtual IconImage icon(const std::string& path, int size, double scale) = 0;

    // The icon of applications that have none. Reads no file.
    [[nodiscard]] virtual IconImage genericIcon(int size, double scale) = 0;

    // Tells that icons may have come, gone or changed: the next call of icon() looks at the files
    // again. Without refresh(), changes need not be noticed. Returns at once.
    virtual void refresh() = 0;

    // Tells that no icon was asked for in a while: frees what serves only to draw icons, until the
    // next one is asked for.
    virtual void rest() = 0;
};

}  // namespace tavo
