// A status item as a panel is given it that draws it itself, and its menu.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/StartRequest.h"

namespace tavo {

// Square; rows of pixels 0xAARRGGBB from the top, the colours not multiplied by the opacity.
struct StatusItemImage {
    int side = 0;
    std::vector<std::uint32_t> pixels;  // side * side of them
};

struct StatusItemMenuEntry {
    std::string text;        // empty for a divider
    std::string controlKey;  // chooses it while the menu is open, together with Ctrl; may be empty
};

// Texts are UTF-8.
struct StatusItemContent {
    std::string title;  // the tool tip too
    std::vector<StatusItemImage> images;
    std::vector<StatusItemMenuEntry> menu;
};

// What the user did with the item.
struct StatusItemClick {
    std::optional<std::size_t> entry;  // of the menu; the item itself otherwise
    StartRequest request;              // what lets the window that answers come to the front

    bool operator==(const StatusItemClick&) const = default;
};

}  // namespace tavo
