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

// The margin of a window, in device pixels.
struct WindowMargin {
    int width = 0;  // on each side; 0: no margin
    // Where the window takes input; elsewhere the windows below do. Means nothing without a margin.
    PixelRect input;
    // The smallest size of the window, without its margin.
    int smallestWidth = 0;
    int smallestHeight = 0;

    bool operator==(const WindowMargin&) const = default;
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

    // Asks the desktop to blur what is behind `region` of the window, counted from the window's
    // corner without its margin; empty: nowhere. `window` is the window system's id. The request
    // ends with the window, and has no effect unless blurs().
    virtual void blurBehind(std::uintptr_t window, const std::vector<PixelRect>& region) = 0;

    // Whether a window may have a transparent margin to draw its shadow in. The desktop places,
    // sizes and snaps such a window as though the margin were not there.
    [[nodiscard]] virtual bool takesMargins() const = 0;

    // Tells the desktop of the window's margin; `window` is the window system's id. Holds until the
    // next call or the end of the window. The window's size may change by this: the caller sets it
    // afterwards. Has no effect unless takesMargins() or the margin is 0 wide.
    virtual void setMargin(std::uintptr_t window, const WindowMargin& margin) = 0;

    // The answer of active(), blurs() or takesMargins() has changed.
    Signal<> changed;
};

}  // namespace tavo
