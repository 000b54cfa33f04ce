// Application bundles: folders with a program and, in Contents/Info.plist, a description of it.
#pragma once

#include <optional>
#include <string>

#include "platform/Workspace.h"

namespace tavo {

// The facts of the bundle at `path`, which may be any folder; none when it is no folder.
//
// Identifier and signature are CFBundleIdentifier and CFBundleSignature. The program's name N is
// CFBundleExecutable, else the folder's name without extension. The program is the first that
// exists of Contents/MacOS/N, Contents/N and N; there is none when N leads out of these folders.
// Any thread.
std::optional<BundleFacts> readBundleFolder(const std::string& path);

}  // namespace tavo
