// The files that come with the program.
#pragma once

#include <QImage>
#include <QString>

namespace tavo {

// The path of the resource `name` ("TavoLauncherMark.png", "symbols/star.svg"): beside the
// program while it is being developed, else in the installation's data folder, which is found from
// where the program is: an installation may be moved as a whole.
QString resourcePath(const QString& name);

// The picture in the resource `name`, a PNG file; null when the file is missing or cannot be read.
// Any thread.
QImage pngResource(const QString& name);

}  // namespace tavo
