// The index.theme file of an icon theme (Icon Theme Specification 0.13, freedesktop.org).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// One of the folders in which a theme keeps its files. Sizes are logical pixels.
struct IconSubfolder {
    std::string path;  // relative to the theme's folder; never leads out of it
    int size = 0;
    int scale = 1;
    int least = 0;  // of what its drawings may be shown at; `size` unless it is scalable
    int most = 0;
    bool scalable = false;

    bool operator==(const IconSubfolder&) const = default;
};

struct IconThemeIndex {
    std::vector<std::string> inherits;  // names of themes, as written
    std::vector<IconSubfolder> subfolders;
};

// Never fails: what makes no sense is left out. At most 4,096 subfolders and 64 parents.
IconThemeIndex parseIconThemeIndex(std::string_view text);

// What the theme "hicolor" has where no index.theme says so: folders for applications alone.
IconThemeIndex plainHicolorIndex();

}  // namespace tavo
