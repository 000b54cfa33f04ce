// Starting the program of an application bundle.
#pragma once

#include "platform/linux/opening/ApplicationStart.h"

namespace tavo {

// On `thread`, which must outlive the start's answer. Waits for nothing but the start itself.
void openBundle(GLibThread& thread, const ApplicationStart& start);

}  // namespace tavo
