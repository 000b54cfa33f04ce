// Names for made-up applications.
#pragma once

#include <string>

namespace tavo {

// A different name for each number. Some names have letters beyond ASCII.
inline std::string applicationName(int number) {
    static const char* const kFirst[] = {"Visual", "Super", "Gnome",   "Editor",  "Foto",
                                         "Media",  "Disk",  "Système", "Network", "Caffè"};
    static const char* const kSecond[] = {"Studio",   "Viewer", "Manager", "Player",  "Tool",
                                          "Писатель", "Center", "Browser", "Monitor", "Lab"};
    return std::string(kFirst[number % 10]) + " " + kSecond[(number / 10) % 10] + " " +
           std::to_string(number);
}

}  // namespace tavo
