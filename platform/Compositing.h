// Whether the desktop blends translucent windows with the windows behind them.
#pragma once

#include <cstdint>
#include <vector>

#include "support/Signal.h"

namespace tavo {

// In device pixels, from the window's top left corner.
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

    // Whether windows are blended at all. Where they are not, a window can have round corners by
    // its shape only. Cheap enough to ask at every resize.
    [[nodiscard]] virtual bool active() const = 0;

    // Whether the desktop can blur the windows behind a translucent one.
    [[nodiscard]] virtual bool blurs() const = 0;

    // Asks the desktop to blur what is behind `region` of the window; empty: nowhere. `window` is
    // the window system's id. The request ends with the window, and has no effect unless blurs().
    virtual void blurBehind(std::uintptr_t window, const std::vector<PixelRect>& region) = 0;

    // The answer of active() or blurs() has changed.
    Signal<> changed;
};

}  // namespace tavo
