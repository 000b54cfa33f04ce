// The user's and the system's folders for data, configuration and caches (XDG Base Directory
// Specification, freedesktop.org).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavo {

// All folders are absolute, without a trailing slash, and need not exist. Relative paths in the
// environment variables are ignored.
struct XdgFolders {
    // The user's own folders. Empty when neither a variable nor the password database tells where
    // the home folder is.
    std::string home;
    std::string dataHome;
    std::string cacheHome;

    // The most important first, each once: the user's, then the system's. The data folders end with
    // those to which Flatpak and snap export, because some sessions have an XDG_DATA_DIRS without
    // them.
    std::vector<std::string> dataDirs;
    std::vector<std::string> configDirs;

    // Reads the environment of this process as it is now. Main thread.
    static XdgFolders fromProcess();
};

// The pieces of a list like PATH. An empty text has none; an empty piece is kept.
std::vector<std::string> splitAtColons(std::string_view list);

}  // namespace tavo
