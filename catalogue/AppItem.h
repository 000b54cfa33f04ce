// One discovered application.
#pragma once

#include <string>
#include <utility>

#include "support/Uuid.h"

namespace tavo {

// Where something lies in the file system. `path` is kept and compared as the exact bytes that
// the system gave: symbolic links not resolved, no trailing slash.
struct FileUrl {
    std::string path;

    bool operator==(const FileUrl&) const = default;
};

// A record of one scan; the next scan makes new ones. Its icon is not part of it: whoever draws
// the application asks the IconSource for the icon of `url.path`, anew each time.
struct AppItem {
    AppItem(std::string itemName, FileUrl itemUrl)
        : id(Uuid::random()), name(std::move(itemName)), url(std::move(itemUrl)) {}

    Uuid id;           // the tile's identity, new at every construction
    std::string name;  // as the user reads it, UTF-8
    FileUrl url;       // the bundle, or the desktop entry file; its path is the key of all marks
};

}  // namespace tavo
