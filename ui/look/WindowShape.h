// The outline of the window that a widget is in.
#pragma once

class QWidget;

namespace tavo {

// Whether the window is square and fills its place to the edges: maximised or on the full screen.
[[nodiscard]] bool isFlush(const QWidget& widget);

// The radius of the window's corners, in logical pixels.
[[nodiscard]] int windowRadius(const QWidget& widget);

}  // namespace tavo
