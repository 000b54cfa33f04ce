// The files that come with the program.
#pragma once

#include <QString>

namespace tavo {

// The path of the resource `name` ("TavoLauncherMark.png", "symbols/star.svg"): beside the
// program while it is being developed, under share/tavolauncher/ of its prefix once installed.
QString resourcePath(const QString& name);

}  // namespace tavo
