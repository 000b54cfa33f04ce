// The pictures, texts and menu of a status item that the panel itself draws.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/StartRequest.h"

namespace tavo {

// A square picture: rows of pixels 0xAARRGGBB from the top, the colours not premultiplied.
struct StatusItemImage {
    int side = 0;
    std::vector<std::uint32_t> pixels;  // side * side of them
};

struct StatusItemMenuEntry {
    std::string text;  // empty for a separator
    std::string
        controlKey;  // the letter of its shortcut with Ctrl while the menu is open; may be empty
};

// Texts are UTF-8.
struct StatusItemContent {
    std::string title;  // the accessible name and the tool tip
    std::vector<StatusItemImage> images;
    std::vector<StatusItemMenuEntry> menu;
};

// A point on the screen, in the panel's own units.
struct StatusItemPoint {
    int x = 0;
    int y = 0;

    bool operator==(const StatusItemPoint&) const = default;
};

// A click on the item or on an entry of its menu.
struct StatusItemClick {
    // The index of the menu entry; absent for a click on the item itself.
    std::optional<std::size_t> entry = {};
    // Where the panel wants the menu, when it leaves drawing it to the program.
    std::optional<StatusItemPoint> menuAt = {};
    // Carries the activation token with which the window may come to the front.
    StartRequest request = {};

    bool operator==(const StatusItemClick&) const = default;
};

}  // namespace tavo
