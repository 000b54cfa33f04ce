// The index "icon-theme.cache" (version 1.0) that gtk-update-icon-cache puts into an icon theme's
// folder: it tells which of the theme's subfolders have a file for an icon name.
//
// Each look-up reads a few bytes of the open file. Only the names of the subfolders are kept in
// memory, and a file that shrinks meanwhile gives fewer answers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/FileDescriptor.h"

namespace tavo {

// Several threads may look up at once.
class GtkIconCache {
public:
    enum Suffix : std::uint16_t { kXpm = 1, kSvg = 2, kPng = 4 };

    struct Image {
        std::size_t subfolder = 0;   // position in subfolders()
        std::uint16_t suffixes = 0;  // bits of Suffix
    };

    // Absent when there is no such file, or when it is no index of this version.
    static std::optional<GtkIconCache> open(const std::string& path);

    [[nodiscard]] const std::vector<std::string>& subfolders() const { return subfolders_; }

    // Every image of the icon `name`. Empty also when the file is damaged there.
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
