// Running applications in a session that does not list the windows of other programs.
#pragma once

#include <memory>

#include "platform/RunningApplications.h"

namespace tavo {

// Answers that nothing runs, so that every application is opened anew, and brings nothing to the
// front.
std::unique_ptr<RunningApplications> makeNullRunningApplications();

}  // namespace tavo
