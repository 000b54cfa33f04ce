// The font that pictures are drawn with.
#pragma once

#include <QString>
#include <optional>

namespace tavo {

// Makes Inter the only font of this process, drawn the same way whatever the user, the machine and
// its caches say. Before the application object is made. Writes only below `folder`.
void pinFont(const QString& folder);

// Its version, and what else tells one build of it from another; none where it is not installed.
// After the application object is made.
std::optional<QString> pinnedFont();

}  // namespace tavo
