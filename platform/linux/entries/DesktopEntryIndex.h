// The desktop entries that the launcher lists, for the code that tells whose window a window is.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace tavo {

// The part of a desktop entry by which its windows are recognised. Kept apart from DesktopEntry,
// which is several times larger: thousands of these stay in memory. An empty string: the entry does
// not say.
struct ListedEntry {
    std::string identifier;      // the desktop-file id, "org.example.App.desktop"
    std::string path;            // of the entry's file
    std::string startupWmClass;  // StartupWMClass
    std::string program;         // the base name of the first word of Exec
};

// The result of the latest scan. Any thread.
class DesktopEntryIndex {
public:
    using Entries = std::vector<ListedEntry>;

    void replace(Entries entries) {
        auto replacement = std::make_shared<const Entries>(std::move(entries));
        const std::lock_guard lock(mutex_);
        entries_.swap(replacement);
    }

    // Never null. The same object until the next replace().
    [[nodiscard]] std::shared_ptr<const Entries> entries() const {
        const std::lock_guard lock(mutex_);
        return entries_;
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const Entries> entries_ = std::make_shared<const Entries>();
};

}  // namespace tavo
