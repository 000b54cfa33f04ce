// The font Inter, which tests write the window in.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace tavo {

// The installed files of the weights that the window uses. No other weights, as every test program
// reads all of these files. Whether they exist is for the caller to check.
QStringList interFiles();

// Makes Inter the only font of this process, and draws it alike whatever the fontconfig settings of
// the user and the machine say. Called before the QApplication is made. Writes only below `folder`,
// which outlives the process's use of fonts.
void pinFont(const QString& folder);

// The version of Inter and the checksum of each of its files; absent where it is not installed.
// Called after the QApplication is made.
std::optional<QString> pinnedFont();

}  // namespace tavo
