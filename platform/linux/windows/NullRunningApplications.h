// Running applications on a system that does not show them.
#pragma once

#include <memory>

#include "platform/RunningApplications.h"

namespace tavo {

// Cannot tell: answers that nothing runs, so that every application is opened anew, as a program
// started by hand would be, and brings nothing to the front. For sessions in which no other
// program's windows can be seen.
std::unique_ptr<RunningApplications> makeNullRunningApplications();

}  // namespace tavo
