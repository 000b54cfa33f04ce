// What one folder in the file system holds of an icon theme. A theme may be spread over several
// such folders: the user's, the system's, Flatpak's.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/icons/GtkIconCache.h"
#include "platform/linux/icons/IconThemeIndex.h"

namespace tavo {

// Safe from several threads. Opening looks at dates only; what files there are is read at the first
// question: from GTK's index where it is up to date, else by listing each subfolder once.
class IconThemeFolder {
public:
    enum class Format : std::uint8_t { Png, Svg, Svgz, Xpm };

    struct Picture {
        const IconSubfolder* subfolder = nullptr;
        Format format = Format::Png;
    };

    // `subfolders` must outlive it. Absent when there is no folder at `path`.
    static std::optional<IconThemeFolder> open(const std::string& path,
                                               const std::vector<IconSubfolder>& subfolders);

    // Changes with every file that comes into or goes from one of the subfolders.
    [[nodiscard]] std::uint64_t fingerprint() const { return fingerprint_; }

    // All that are called `name`, in no order.
    [[nodiscard]] std::vector<Picture> pictures(std::string_view name) const;

    // Of such a picture; the file may have gone meanwhile.
    [[nodiscard]] std::string file(std::string_view name, const Picture& picture) const;

private:
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const {
            return std::hash<std::string_view>()(name);
        }
    };
    // What files there are, made at the first question.
    struct Contents {
        std::once_flag made;
        std::optional<GtkIconCache> cache;
        std::vector<const IconSubfolder*> cacheSubfolders;  // null where the theme has no such one
        std::unordered_map<std::string, std::vector<Picture>, NameHash, std::equal_to<>> pictures;
    };

    IconThemeFolder() = default;
    void readContents() const;
    void list(const IconSubfolder& subfolder) const;
    [[nodiscard]] std::vector<Picture> cachedPictures(std::string_view name) const;

    std::string path_;
    std::uint64_t fingerprint_ = 0;
    std::vector<const IconSubfolder*> present_;
    bool hasCache_ = false;  // that is no older than anything in the folder
    std::unique_ptr<Contents> contents_ = std::make_unique<Contents>();
};

// The format that the ending of `fileName` stands for. `stem`: the name without it.
std::optional<IconThemeFolder::Format> pictureFormat(std::string_view fileName,
                                                     std::string_view& stem);

}  // namespace tavo
