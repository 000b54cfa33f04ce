// One folder of an icon theme, such as /usr/share/icons/Adwaita. A theme may be spread over several
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

// open() reads modification times only. The first call of pictures() finds out which files there
// are: from GTK's index "icon-theme.cache" where it is up to date, else by listing each subfolder.
// Concurrent calls wait for that first one. Any thread.
class IconThemeFolder {
public:
    enum class Format : std::uint8_t { Png, Svg, Svgz, Xpm };

    struct Picture {
        const IconSubfolder* subfolder = nullptr;
        Format format = Format::Png;
    };

    // `subfolders` must outlive the object. Absent when there is no folder at `path`.
    static std::optional<IconThemeFolder> open(const std::string& path,
                                               const std::vector<IconSubfolder>& subfolders);

    // A hash that is the same in every process, until a file is added to or removed from one of the
    // subfolders.
    [[nodiscard]] std::uint64_t fingerprint() const { return fingerprint_; }

    // Every picture of the icon `name`, in no order.
    [[nodiscard]] std::vector<Picture> pictures(std::string_view name) const;

    // The path of the icon `name` as `picture`. The file may have gone meanwhile.
    [[nodiscard]] std::string file(std::string_view name, const Picture& picture) const;

private:
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const {
            return std::hash<std::string_view>()(name);
        }
    };
    // Which files there are. Filled by the first call of pictures(), then immutable.
    struct Contents {
        std::once_flag made;
        std::optional<GtkIconCache> cache;
        std::vector<const IconSubfolder*> cacheSubfolders;  // null: not in the theme's index
        std::unordered_map<std::string, std::vector<Picture>, NameHash, std::equal_to<>> pictures;
    };

    IconThemeFolder() = default;
    void readContents() const;
    void list(const IconSubfolder& subfolder) const;
    [[nodiscard]] std::vector<Picture> cachedPictures(std::string_view name) const;

    std::string path_;
    std::uint64_t fingerprint_ = 0;
    std::vector<const IconSubfolder*> present_;
    bool hasCache_ = false;  // an icon-theme.cache that is as new as all subfolders
    std::unique_ptr<Contents> contents_ = std::make_unique<Contents>();
};

// The format by the ending of `fileName`. Sets `stem` to the name without the ending. Absent for
// any other ending, which leaves `stem` unchanged.
std::optional<IconThemeFolder::Format> pictureFormat(std::string_view fileName,
                                                     std::string_view& stem);

}  // namespace tavo
