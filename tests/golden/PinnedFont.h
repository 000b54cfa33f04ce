// The font that pictures are drawn with.
#pragma once

#include <QString>

namespace tavo {

// Makes Inter the only font of this process, drawn the same way whatever the user, the machine and
// its caches say. Before the application object is made. Writes only below `folder`.
void pinFont(const QString& folder);

// Its version, and what else tells one build of it from another; after the application object is
// made.
QString pinnedFont();

}  // namespace tavo
