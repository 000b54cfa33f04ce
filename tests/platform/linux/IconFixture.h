// Themes, pictures and icon files made for one test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/IconSource.h"
#include "platform/linux/IconEnvironment.h"
#include "tests/TemporaryFolder.h"

namespace tavo {

// Makes the folders above it, too.
void writeFile(const std::string& path, std::string_view bytes);
std::string readFile(const std::string& path);

// A picture of one colour (ARGB, not premultiplied), as the bytes of a file.
std::string pngBytes(int width, int height, std::uint32_t colour);
std::string svgText(int width, int height, std::uint32_t colour);
std::string xpmText(int side, std::uint32_t colour);
std::string gzipped(std::string_view bytes);

std::string bigEndian(std::uint32_t number);
std::string bigEndian16(std::uint32_t number);

// A chunk of an .icns file, and the file itself.
std::string icnsChunk(std::string_view type, std::string_view content);
std::string icnsFile(std::string_view chunks);

// Sets the date of a file or folder, in seconds since the epoch.
void setDate(const std::string& path, std::int64_t seconds);

std::uint32_t pixelAt(const IconImage& icon, int x, int y);
std::uint32_t middleOf(const IconImage& icon);

// A subfolder of a theme as its index describes it.
struct ThemeSubfolder {
    std::string path;
    int size = 48;
    std::string rest;  // more lines: "Type=Scalable\nMinSize=8\n"
};

// A home of its own: "user/icons" before "system/icons", and "system/pixmaps".
class IconWorld {
public:
    [[nodiscard]] std::string operator/(const std::string& name) const { return folder_ / name; }

    [[nodiscard]] IconEnvironment environment() const;

    // In the system's icon folder. `inherits`: as the key has it.
    void addTheme(const std::string& name, const std::vector<ThemeSubfolder>& subfolders,
                  const std::string& inherits = "");

    // A picture for the theme; its colour tells which one was taken.
    std::string addPng(const std::string& file, int side, std::uint32_t colour);

    // An entry whose Icon key has this value.
    std::string addEntry(const std::string& name, const std::string& icon);

private:
    TemporaryFolder folder_;
};

}  // namespace tavo
