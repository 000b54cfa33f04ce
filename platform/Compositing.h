// How the desktop blends windows into what lies behind them.
#pragma once

#include <cstdint>
#include <vector>

#include "support/Signal.h"

namespace tavo {

// In pixels of the screen, from the window's top left corner.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PixelRect&) const = default;
};

// Main thread.
class Compositing {
public:
    virtual ~Compositing() = default;

    // Whether windows are blended at all. Where they are not, a window with round corners has them
    // cut out instead of painted. Cheap enough to be asked at every resize.
    [[nodiscard]] virtual bool active() const = 0;

    // Whether what lies behind a translucent window can be blurred.
    [[nodiscard]] virtual bool blurs() const = 0;

    // The region of the window, by its identifier on the system, behind which blurring is wanted;
    // empty: nowhere. The system forgets it with the window. Where nothing blurs, nothing happens.
    virtual void blurBehind(std::uintptr_t window, const std::vector<PixelRect>& region) = 0;

    // active() or blurs() answers otherwise from now on.
    Signal<> changed;
};

}  // namespace tavo
