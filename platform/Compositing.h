// Whether the desktop blends windows into what lies behind them.
#pragma once

namespace tavo {

// Where it does not, a window with round corners has them cut out instead of painted.
class Compositing {
public:
    virtual ~Compositing() = default;

    // Main thread; cheap enough to be asked at every resize.
    [[nodiscard]] virtual bool active() const = 0;
};

}  // namespace tavo
