// The files that are installed with the program.
#pragma once

#include <QImage>
#include <QString>

namespace tavo {

// The path of the resource `name` ("TavoLauncherMark.png", "symbols/star.svg"): in the folder
// "resources" beside the program, as in a build, else in the data folder of the installation. The
// data folder is found from the program's own path, so that an installation can be moved as a
// whole.
QString resourcePath(const QString& name);

// The picture in the resource `name`, a PNG file; null when the file is missing or cannot be read.
// Any thread.
QImage pngResource(const QString& name);

}  // namespace tavo
