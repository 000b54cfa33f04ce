// The FileManager port over opendir(3).
#pragma once

#include <memory>

#include "platform/FileManager.h"

namespace tavo {

// The home folder is HOME when that is absolute, else the one in the password database; looked up
// at each call.
std::unique_ptr<FileManager> makePosixFileManager();

}  // namespace tavo
