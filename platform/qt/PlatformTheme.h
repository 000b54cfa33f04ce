// The platform theme that Qt uses here, and the only one that it loads.
//
// A platform theme is what Qt knows about the desktop. Those that desktops install as plug-ins
// bring their libraries into the process, GTK among them. This one is linked in and knows nothing
// of any desktop: what the user has chosen there comes from DesktopSettings.
#pragma once

#include <array>
#include <optional>

namespace tavo {

// The arguments for the QGuiApplication, which keeps them, so they must outlive it. They make Qt
// take the theme whatever QT_QPA_PLATFORMTHEME says. No variable is changed.
class PlatformThemeArguments {
public:
    // `program` is argv[0].
    explicit PlatformThemeArguments(char* program);
    PlatformThemeArguments(const PlatformThemeArguments&) = delete;
    PlatformThemeArguments& operator=(const PlatformThemeArguments&) = delete;

    // Qt changes both: it takes out what it has read.
    int& count() { return count_; }
    char** values() { return values_.data(); }

private:
    std::array<char, sizeof "-platformtheme"> option_;
    std::array<char, sizeof "tavo"> theme_;
    std::array<char*, 4> values_;
    int count_ = 3;
};

// How far apart the two presses of a double click may be, in logical pixels; Qt asks the theme
// alone. Absent, as at first: Qt's own distance. Main thread.
void setDoubleClickDistance(std::optional<int> pixels);

}  // namespace tavo
