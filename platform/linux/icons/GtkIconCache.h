// The index that GTK's gtk-update-icon-cache puts into a theme's folder ("icon-theme.cache",
// version 1.0): which of the theme's subfolders have a file for a name.
//
// Looked up in the file itself, a few bytes at a time: nothing of it is kept in memory but the
// names of the subfolders, and a file that shrinks meanwhile does no harm.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/FileDescriptor.h"

namespace tavo {

// Looking up may be done by several threads at once.
class GtkIconCache {
public:
    enum Suffix : std::uint16_t { kXpm = 1, kSvg = 2, kPng = 4 };

    struct Image {
        std::size_t subfolder = 0;   // position in subfolders()
        std::uint16_t suffixes = 0;  // several of Suffix
    };

    // Absent when there is no such file, or when it is of another kind.
    static std::optional<GtkIconCache> open(const std::string& path);

    [[nodiscard]] const std::vector<std::string>& subfolders() const { return subfolders_; }

    // None also when the file is broken where the name would stand.
    [[nodiscard]] std::vector<Image> images(std::string_view name) const;

private:
    explicit GtkIconCache(FileDescriptor file) : file_(std::move(file)) {}

    bool readSubfolders();
    [[nodiscard]] std::optional<std::uint16_t> number16(std::uint64_t offset) const;
    [[nodiscard]] std::optional<std::uint32_t> number32(std::uint64_t offset) const;
    [[nodiscard]] std::string text(std::uint64_t offset) const;
    [[nodiscard]] std::vector<Image> imageList(std::uint64_t offset) const;

    FileDescriptor file_;
    std::vector<std::string> subfolders_;
};

}  // namespace tavo
