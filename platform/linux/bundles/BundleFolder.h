// Application bundles: folders that hold a program and a description of it. Any thread.
#pragma once

#include <optional>
#include <string>

#include "platform/Workspace.h"

namespace tavo {

// Any folder at `path` is a bundle; anything else answers none.
//
// Identifier and signature come from Contents/Info.plist. The program is the one that it names
// (CFBundleExecutable), else the one that has the bundle's name without extension, the first that
// exists of Contents/MacOS/N, Contents/N and N. A name that leads elsewhere than further down
// (absolute, or with an empty, "." or ".." part) is no program.
std::optional<BundleFacts> readBundleFolder(const std::string& path);

}  // namespace tavo
