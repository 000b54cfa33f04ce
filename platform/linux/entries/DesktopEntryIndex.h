// The desktop entries that the launcher lists, and which of them a window belongs to.
//
// A window belongs to an entry for a reason that one of the two states, never for a likeness: a
// wrong window brought forward is worse than a second one opened. Where reasons disagree the
// stronger one counts, and where two entries have the same reason the window is nobody's.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tavo {

// What of an entry its windows can be recognised by. Empty texts: the entry does not say.
struct ListedEntry {
    std::string identifier;      // the desktop-file id, "org.example.App.desktop"
    std::string path;            // of its file
    std::string startupWmClass;  // StartupWMClass
    std::string program;         // the base name of its command's first word
};

// What a window says of its application. Empty texts: nothing.
struct WindowNames {
    std::string instance;   // WM_CLASS, the first string
    std::string className;  // WM_CLASS, the second
    std::string appId;      // the toolkit's or Wayland's application id

    bool operator==(const WindowNames&) const = default;
};

// The identifier of the application as which a window's process was started; asked only when it
// matters, because finding it out takes a look at the process. Empty when not known.
using LaunchedFrom = std::function<std::string()>;

// Immutable, any thread.
class WindowMatching {
public:
    explicit WindowMatching(std::vector<ListedEntry> entries);

    // The identifier of the application to which a window belongs; empty when it is nobody's. The
    // reasons, the strongest first, ASCII letters compared without case:
    //   - instance, else class, else application id is the entry's StartupWMClass;
    //   - instance, else class, else application id is the entry's id (without ".desktop");
    //   - instance, else class, else application id is the base name of the entry's program,
    //     unless another listed entry has the same one, the entry has a StartupWMClass, or the
    //     program runs others (isGenericProgram);
    //   - the window's process was started as this entry.
    // Entries that share a reason are told apart by where the process was started from, then by
    // the weaker reasons.
    //
    // `asked` is an application about which nobody but its identifier is known (a bundle, an entry
    // that is not listed): it takes part with that.
    [[nodiscard]] std::string owner(const WindowNames& names, const LaunchedFrom& launchedFrom,
                                    const std::string& asked = {}) const;

    // Of the listed entry whose file that is; empty for any other file.
    [[nodiscard]] std::string identifierAt(const std::string& path) const;

private:
    using Index = std::unordered_map<std::string, std::vector<std::size_t>>;

    std::vector<ListedEntry> entries_;
    Index byWmClass_;
    Index byIdentifier_;
    Index byProgram_;
    std::unordered_map<std::string, std::size_t> byExactIdentifier_;
    std::unordered_map<std::string, std::size_t> byPath_;

    class Search;
};

// Whether a program of that name runs other programs' code, or shows their output: interpreters,
// shells, wrappers, terminals. A version at the end ("python3.11") does not count.
[[nodiscard]] bool isGenericProgram(std::string_view name);

// What the latest scan listed. Any thread.
class DesktopEntryIndex {
public:
    void replace(std::vector<ListedEntry> entries);

    // Made at the first call after a replacement, because a scan has no time for it.
    [[nodiscard]] std::shared_ptr<const WindowMatching> matching();

private:
    std::mutex mutex_;
    std::vector<ListedEntry> entries_;
    std::shared_ptr<const WindowMatching> matching_;
};

}  // namespace tavo
