// Starting what a desktop entry describes.
#pragma once

#include <memory>

#include "platform/linux/opening/ApplicationStart.h"

namespace tavo {

// On `thread`, which must outlive the start's answer.
//
// An entry that can be activated over the session bus is, and fails when the bus does not answer:
// its command might start a second one of it. Any other starts without waiting for the bus long;
// GIO, which would, starts it only once the bus has answered.
void openEntry(GLibThread& thread, const std::shared_ptr<const ApplicationStart>& start);

}  // namespace tavo
