// What the applications of a made-up world are called.
#pragma once

#include <string>

namespace tavo {

// Each number has a name of its own. Some have letters beyond ASCII, as names of applications do.
inline std::string applicationName(int number) {
    static const char* const kFirst[] = {"Visual", "Super", "Gnome",   "Editor",  "Foto",
                                         "Media",  "Disk",  "Système", "Network", "Caffè"};
    static const char* const kSecond[] = {"Studio",   "Viewer", "Manager", "Player",  "Tool",
                                          "Писатель", "Center", "Browser", "Monitor", "Lab"};
    return std::string(kFirst[number % 10]) + " " + kSecond[(number / 10) % 10] + " " +
           std::to_string(number);
}

}  // namespace tavo
