// The file manager over POSIX folders.
#pragma once

#include <memory>

#include "platform/FileManager.h"

namespace tavo {

// The home folder is HOME, else the password database's; read at each call.
std::unique_ptr<FileManager> makePosixFileManager();

}  // namespace tavo
