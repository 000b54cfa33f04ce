// What the user can do with the status item.
#pragma once

#include <functional>

#include "platform/StartRequest.h"

namespace tavo {

// Called on the main thread.
struct StatusItemActions {
    std::function<void(const StartRequest&)> show;
    std::function<void()> quit;
};

}  // namespace tavo
