// Which listed application a window belongs to.
//
// A match is exact, never a likeness: a wrong window in front is worse than a second one opened.
// Where reasons disagree the stronger one decides. A window that several entries have an equal
// claim to belongs to none.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/linux/entries/DesktopEntryIndex.h"

namespace tavo {

// The names that a window has for its application. Empty: not set.
struct WindowNames {
    std::string instance;   // WM_CLASS, the first string
    std::string className;  // WM_CLASS, the second string
    std::string appId;      // xdg_toplevel.set_app_id, _GTK_APPLICATION_ID or KDE's equivalent

    bool operator==(const WindowNames&) const = default;
};

// Answers the identifier of the entry that the window's process was started from; empty when it is
// not known. Called only when the names do not decide, because it reads files in /proc.
using LaunchedFrom = std::function<std::string()>;

// Immutable, any thread.
class WindowMatcher {
public:
    // `entries` is not null.
    explicit WindowMatcher(std::shared_ptr<const DesktopEntryIndex::Entries> entries);

    // The identifier of the application that the window belongs to; empty when there is none. The
    // reasons, the strongest first, ASCII letters compared without case:
    //   - instance, else class, else application id is the entry's StartupWMClass;
    //   - instance, else class, else application id is the entry's id (without ".desktop");
    //   - instance, else class, else application id is the base name of the entry's program,
    //     unless another listed entry has the same program, the entry has a StartupWMClass, or the
    //     program runs other programs (isGenericProgram);
    //   - the window's process was started from the entry;
    //   - instance, else class, else application id is the base name of the program of several
    //     entries, under the same conditions, and the last part of the id of one of them:
    //     "mousepad" is of org.xfce.mousepad, not of org.xfce.mousepad-settings.
    // Entries with the same reason are told apart by the entry that the process was started from,
    // then by the weaker reasons.
    //
    // `asked`: the identifier of an application that may not be listed (a bundle, an entry outside
    // the menu). It takes part in the match by this identifier and by `launchedFrom`.
    [[nodiscard]] std::string owner(const WindowNames& names, const LaunchedFrom& launchedFrom,
                                    const std::string& asked = {}) const;

    // The identifier of the listed entry whose file is `path`; empty for any other path.
    [[nodiscard]] std::string identifierAt(const std::string& path) const;

private:
    using Index = std::unordered_map<std::string, std::vector<std::size_t>>;

    std::shared_ptr<const DesktopEntryIndex::Entries> entries_;
    Index byWmClass_;
    Index byIdentifier_;
    Index byProgram_;
    std::unordered_map<std::string, std::size_t> byExactIdentifier_;
    std::unordered_map<std::string, std::size_t> byPath_;

    class Search;
};

// The matcher for the entries that are listed now. One thread.
class LatestWindowMatcher {
public:
    // `listed` is not null.
    explicit LatestWindowMatcher(std::shared_ptr<const DesktopEntryIndex> listed)
        : listed_(std::move(listed)) {}

    // Makes a new matcher at the first call after a scan, not during it: a scan runs while the
    // program starts, and must not take longer. The answer is valid until the next call.
    [[nodiscard]] const WindowMatcher& get();

private:
    const std::shared_ptr<const DesktopEntryIndex> listed_;
    std::shared_ptr<const DesktopEntryIndex::Entries> entries_;  // what matcher_ was made of
    std::unique_ptr<const WindowMatcher> matcher_;
};

// Whether a program of that name runs the code of other programs, or shows their output:
// interpreters, shells, wrappers, terminals. A version at the end ("python3.11") does not count.
[[nodiscard]] bool isGenericProgram(std::string_view name);

}  // namespace tavo
