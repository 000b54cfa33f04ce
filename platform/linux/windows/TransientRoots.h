// Which window stands for which dialogs.
#pragma once

#include <cstddef>
#include <vector>

namespace tavo {

// `parents` says for each of its places where the window is that this one is a dialog of; its own
// place, when it is none. Answers for each place where that ends: at a window that is no dialog.
// Windows that are dialogs of each other in a circle stand for themselves, and what leads into the
// circle for the one of it that it meets first. Takes time in proportion to the windows, however
// they are linked: they are anybody's to link. A pure function, any thread.
[[nodiscard]] std::vector<std::size_t> transientRootsOf(const std::vector<std::size_t>& parents);

}  // namespace tavo
