// The icon of applications that have none, drawn by the launcher itself.
#pragma once

#include "platform/IconSource.h"

namespace tavo {

// A grey tile with a window on it, `side` pixels large, at least 1. Any thread.
IconImage drawGenericIcon(int side);

}  // namespace tavo
