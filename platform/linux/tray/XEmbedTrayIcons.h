// The toolkit's status items, as windows within a tray.
#pragma once

#include <functional>

namespace tavo {

// Inside `make` the toolkit makes each status item to be embedded. It would otherwise choose
// between trays and panels by what it found on the bus when it first looked, and never look again.
// Main thread.
void withXEmbedTrayIcons(const std::function<void()>& make);

}  // namespace tavo
