// The window that a dialog belongs to, through any number of dialogs.
#pragma once

namespace tavo {

// `Window` has a member `parent`, a pointer to the listed window that it is a dialog of, or null.
// Answers `window` itself when it is no dialog. Ends after 32 steps, for programs may link their
// windows in a circle.
template<typename Window>
[[nodiscard]] const Window& transientRoot(const Window& window) {
    constexpr int kMostSteps = 32;
    const Window* root = &window;
    for (int step = 0; step < kMostSteps && root->parent != nullptr; ++step) {
        root = root->parent;
    }
    return *root;
}

}  // namespace tavo
