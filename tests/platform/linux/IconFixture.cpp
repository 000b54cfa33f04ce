#include "tests/platform/linux/IconFixture.h"

#include <QBuffer>
#include <QImage>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

#include <zlib.h>

namespace tavo {
namespace {

std::string hexColour(std::uint32_t colour) {
    char text[8] = {};
    std::snprintf(text, sizeof text, "#%06x", colour & 0xffffffU);
    return text;
}

}  // namespace

void writeFile(const std::string& path, std::string_view bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string pngBytes(int width, int height, std::uint32_t colour) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!image.save(&buffer, "PNG")) {
        throw std::runtime_error("no PNG can be written");
    }
    return bytes.toStdString();
}

std::string svgText(int width, int height, std::uint32_t colour) {
    const std::string w = std::to_string(width);
    const std::string h = std::to_string(height);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + w + " " + h +
           "\"><rect width=\"" + w + "\" height=\"" + h + "\" fill=\"" + hexColour(colour) +
           "\"/></svg>";
}

std::string xpmText(int side, std::uint32_t colour) {
    const std::string number = std::to_string(side);
    std::string text = "/* XPM */\nstatic char * icon[] = {\n\"" + number + " " + number +
                       " 1 1\",\n\"x c " + hexColour(colour) + "\"";
    for (int y = 0; y < side; ++y) {
        text += ",\n\"" + std::string(static_cast<std::size_t>(side), 'x') + "\"";
    }
    return text + "};\n";
}

std::string gzipped(std::string_view bytes) {
    z_stream stream = {};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, bytes.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

std::string bigEndian16(std::uint32_t number) {
    return {static_cast<char>(number >> 8U), static_cast<char>(number)};
}

std::string bigEndian(std::uint32_t number) {
    return bigEndian16(number >> 16U) + bigEndian16(number);
}

std::string icnsChunk(std::string_view type, std::string_view content) {
    return std::string(type) + bigEndian(static_cast<std::uint32_t>(content.size() + 8)) +
           std::string(content);
}

std::string icnsFile(std::string_view chunks) {
    return icnsChunk("icns", chunks);
}

void setDate(const std::string& path, std::int64_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) {
        throw std::runtime_error("cannot date " + path);
    }
}

std::uint32_t pixelAt(const IconImage& icon, int x, int y) {
    return icon.pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(icon.side) +
                          static_cast<std::size_t>(x));
}

std::uint32_t middleOf(const IconImage& icon) {
    return pixelAt(icon, icon.side / 2, icon.side / 2);
}

IconEnvironment IconWorld::environment() const {
    IconEnvironment environment;
    environment.iconFolders = {folder_ / "user/icons", folder_ / "system/icons"};
    environment.pixmapFolders = {folder_ / "system/pixmaps"};
    environment.configFolders = {folder_ / "config", folder_ / "etc"};
    environment.cacheFolder = folder_ / "cache/icons";
    return environment;
}

void IconWorld::addTheme(const std::string& name, const std::vector<ThemeSubfolder>& subfolders,
                         const std::string& inherits) {
    std::string list;
    std::string sections;
    for (const ThemeSubfolder& subfolder : subfolders) {
        list += subfolder.path + ",";
        sections += "\n[" + subfolder.path + "]\nSize=" + std::to_string(subfolder.size) + "\n" +
                    subfolder.rest;
    }
    writeFile(folder_ / ("system/icons/" + name + "/index.theme"),
              "[Icon Theme]\nName=" + name + "\nInherits=" + inherits + "\nDirectories=" + list +
                  "\n" + sections);
}

std::string IconWorld::addPng(const std::string& file, int side, std::uint32_t colour) {
    writeFile(folder_ / file, pngBytes(side, side, colour));
    return folder_ / file;
}

std::string IconWorld::addEntry(const std::string& name, const std::string& icon) {
    const std::string path = folder_ / ("applications/" + name + ".desktop");
    writeFile(path, "[Desktop Entry]\nType=Application\nName=" + name +
                        "\nExec=true\nIcon=" + icon + "\n");
    return path;
}

}  // namespace tavo
