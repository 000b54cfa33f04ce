// The index.theme file of an icon theme (Icon Theme Specification 0.13, freedesktop.org).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// A folder inside a theme's folder that holds pictures of one size. Sizes are logical pixels.
struct IconSubfolder {
    std::string path;  // relative to the theme's folder, and always inside it
    int size = 0;
    int scale = 1;
    int least = 0;  // MinSize and MaxSize; both are `size` where `scalable` is false
    int most = 0;
    bool scalable = false;

    bool operator==(const IconSubfolder&) const = default;
};

struct IconThemeIndex {
    std::vector<std::string> inherits;  // names of themes, as written
    std::vector<IconSubfolder> subfolders;
};

// Never fails: subfolders that are not described, have no sensible size or lie outside the theme
// are left out. At most 4,096 subfolders and 64 parents.
IconThemeIndex parseIconThemeIndex(std::string_view text);

// The index of the theme "hicolor" where it has no index.theme: the usual folders for application
// icons.
IconThemeIndex plainHicolorIndex();

}  // namespace tavo
