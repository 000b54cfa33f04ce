#include "platform/linux/windows/WindowMatcher.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "platform/linux/entries/DesktopFileId.h"

namespace tavo {
namespace {

// The programs that isGenericProgram() knows. Sorted. Names are looked up as they are, then without
// a version at the end.
constexpr auto kGenericPrograms = std::to_array<std::string_view>({
    // clang-format off
    "alacritty", "ash", "aterm", "bash", "bubblewrap", "bun", "busybox", "bwrap",
    "cool-retro-term", "csh", "dash", "dbus-launch", "dbus-run-session", "deno", "distrobox",
    "distrobox-enter", "doas", "docker", "dotnet", "electron", "env", "eterm", "exo-open",
    "firejail", "fish", "flatpak", "foot", "footclient", "gamemoderun", "gdb", "gio", "gjs",
    "gjs-console", "gksu", "gksudo", "gnome-terminal", "gtk-launch", "guake", "guile", "ionice",
    "java", "javaw", "kde-open", "kdesu", "kgx", "kioclient", "kitty", "konsole", "ksh", "lua",
    "luajit", "lxterm", "lxterminal", "mangohud", "mate-terminal", "mksh", "mlterm", "mono",
    "nice", "node", "nodejs", "nohup", "nw", "optirun", "perl", "php", "pkexec", "podman",
    "prime-run", "primusrun", "proton", "ptyxis", "pypy", "python", "qml", "qmlscene",
    "qterminal", "ruby", "run", "rxvt", "sakura", "setsid", "sh", "snap", "st", "stdbuf", "steam",
    "strace", "su", "sudo", "systemd-inhibit", "systemd-run", "tclsh", "tcsh", "terminator",
    "terminology", "tilda", "tilix", "timeout", "toolbox", "urxvt", "uxterm", "wezterm", "wine",
    "wine-stable", "wish", "x-terminal-emulator", "xdg-open", "xdg-terminal-exec",
    "xfce4-terminal", "xterm", "yakuake", "yash", "zsh",
    // clang-format on
});
static_assert(std::is_sorted(kGenericPrograms.begin(), kGenericPrograms.end()));

std::string folded(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

std::string withoutSuffix(std::string_view identifier) {
    return folded(withoutEntrySuffix(identifier));
}

// "mousepad" of "org.xfce.mousepad.desktop".
std::string lastPart(std::string_view identifier) {
    const std::string name = withoutSuffix(identifier);
    return name.substr(name.rfind('.') + 1);
}

}  // namespace

bool isGenericProgram(std::string_view name) {
    const std::string lower = folded(name);
    std::string_view bare = lower;
    const auto isGeneric = [&] {
        return std::binary_search(kGenericPrograms.begin(), kGenericPrograms.end(), bare);
    };
    if (isGeneric()) {
        return true;
    }
    const std::size_t last = bare.find_last_not_of("0123456789.-");
    bare = bare.substr(0, last == std::string_view::npos ? 0 : last + 1);
    return isGeneric();
}

WindowMatcher::WindowMatcher(std::shared_ptr<const DesktopEntryIndex::Entries> entries)
    : entries_(std::move(entries)) {
    for (std::size_t i = 0; i < entries_->size(); ++i) {
        const ListedEntry& entry = (*entries_)[i];
        if (!entry.startupWmClass.empty()) {
            byWmClass_[folded(entry.startupWmClass)].push_back(i);
        }
        byIdentifier_[withoutSuffix(entry.identifier)].push_back(i);
        if (!entry.program.empty()) {
            byProgram_[folded(entry.program)].push_back(i);
        }
        byExactIdentifier_.emplace(entry.identifier, i);
        byPath_.emplace(entry.path, i);
    }
}

// Finds the application of one window.
class WindowMatcher::Search {
public:
    Search(const WindowMatcher& matcher, const WindowNames& names, const LaunchedFrom& launchedFrom,
           const std::string& asked)
        : matcher_(matcher),
          names_({folded(names.instance), folded(names.className), folded(names.appId)}),
          launchedFrom_(launchedFrom) {
        if (!asked.empty() && !matcher.byExactIdentifier_.contains(asked)) {
            asked_ = asked;
            askedName_ = withoutSuffix(asked);
        }
    }

    // The first reason that leaves one entry decides. Once a reason leaves several entries, the
    // window belongs to one of them, and weaker reasons choose among these only.
    std::string owner() {
        std::vector<std::size_t> left;
        for (const auto reason : {&Search::byWmClass, &Search::byIdentifier, &Search::byProgram}) {
            for (const std::string& name : names_) {
                std::vector<std::size_t> found = among(left, (this->*reason)(name));
                if (found.size() == 1) {
                    return identifier(found.front());
                }
                if (found.size() > 1 && left.empty()) {
                    if (const auto from = launchedFrom(); from && contains(found, *from)) {
                        return identifier(*from);
                    }
                    left = std::move(found);
                }
            }
        }
        if (const auto from = left.empty() ? launchedFrom() : std::nullopt) {
            return identifier(*from);
        }
        for (const std::string& name : names_) {
            const std::vector<std::size_t> found = among(left, byNamesakeProgram(name));
            if (found.size() == 1) {
                return identifier(found.front());
            }
        }
        return {};
    }

private:
    // Stands for the application `asked`, which is not in entries_.
    static constexpr std::size_t kAsked = static_cast<std::size_t>(-1);

    static bool contains(const std::vector<std::size_t>& entries, std::size_t entry) {
        return std::find(entries.begin(), entries.end(), entry) != entries.end();
    }

    // The entries of `found` that are also in `left`; all of them while `left` is empty.
    static std::vector<std::size_t> among(const std::vector<std::size_t>& left,
                                          std::vector<std::size_t> found) {
        if (!left.empty()) {
            std::erase_if(found, [&](std::size_t entry) { return !contains(left, entry); });
        }
        return found;
    }

    // An empty name finds nothing.
    static std::vector<std::size_t> at(const Index& index, const std::string& name) {
        const auto found = name.empty() ? index.end() : index.find(name);
        return found == index.end() ? std::vector<std::size_t>() : found->second;
    }

    [[nodiscard]] std::vector<std::size_t> byWmClass(const std::string& name) const {
        return at(matcher_.byWmClass_, name);
    }

    [[nodiscard]] std::vector<std::size_t> byIdentifier(const std::string& name) const {
        std::vector<std::size_t> found = at(matcher_.byIdentifier_, name);
        if (!askedName_.empty() && name == askedName_) {
            found.push_back(kAsked);
        }
        return found;
    }

    [[nodiscard]] std::vector<std::size_t> byProgram(const std::string& name) const {
        std::vector<std::size_t> found = at(matcher_.byProgram_, name);
        if (found.size() != 1 || !countsByProgram(found.front(), name)) {
            return {};
        }
        return found;
    }

    // Those entries of the program that are called like it.
    [[nodiscard]] std::vector<std::size_t> byNamesakeProgram(const std::string& name) const {
        std::vector<std::size_t> found = at(matcher_.byProgram_, name);
        std::erase_if(found, [&](std::size_t entry) {
            return lastPart(identifier(entry)) != name || !countsByProgram(entry, name);
        });
        return found;
    }

    [[nodiscard]] bool countsByProgram(std::size_t entry, const std::string& program) const {
        return (*matcher_.entries_)[entry].startupWmClass.empty() && !isGenericProgram(program);
    }

    [[nodiscard]] std::optional<std::size_t> launchedFrom() const {
        const std::string from = launchedFrom_ ? launchedFrom_() : std::string();
        if (!from.empty() && from == asked_) {
            return kAsked;
        }
        const auto found = matcher_.byExactIdentifier_.find(from);
        return found == matcher_.byExactIdentifier_.end() ? std::nullopt
                                                          : std::optional(found->second);
    }

    [[nodiscard]] const std::string& identifier(std::size_t entry) const {
        return entry == kAsked ? asked_ : (*matcher_.entries_)[entry].identifier;
    }

    const WindowMatcher& matcher_;
    const std::array<std::string, 3> names_;
    const LaunchedFrom& launchedFrom_;
    std::string asked_;
    std::string askedName_;
};

std::string WindowMatcher::owner(const WindowNames& names, const LaunchedFrom& launchedFrom,
                                 const std::string& asked) const {
    return Search(*this, names, launchedFrom, asked).owner();
}

std::string WindowMatcher::identifierAt(const std::string& path) const {
    const auto found = byPath_.find(path);
    return found == byPath_.end() ? std::string() : (*entries_)[found->second].identifier;
}

const WindowMatcher& LatestWindowMatcher::get() {
    auto entries = listed_->entries();
    if (entries != entries_) {
        matcher_ = std::make_unique<const WindowMatcher>(entries);
        entries_ = std::move(entries);
    }
    return *matcher_;
}

}  // namespace tavo
