// A status item as a panel is given it that draws it itself, and its menu.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/StartRequest.h"

namespace tavo {

// Square; rows of pixels 0xAARRGGBB from the top, the colours not multiplied by the opacity.
struct ItemImage {
    int side = 0;
    std::vector<std::uint32_t> pixels;  // side * side of them
};

struct ItemMenuEntry {
    std::string text;        // empty for a divider
    std::string controlKey;  // chooses it while the menu is open, together with Ctrl; may be empty
};

// Texts are UTF-8.
struct DrawnItem {
    std::string title;  // the tool tip too
    std::vector<ItemImage> images;
    std::vector<ItemMenuEntry> menu;
};

// What the user did with the item.
struct ItemClick {
    std::optional<std::size_t> entry;  // of the menu; the item itself otherwise
    StartRequest request;              // what lets the window that answers come to the front

    bool operator==(const ItemClick&) const = default;
};

}  // namespace tavo
