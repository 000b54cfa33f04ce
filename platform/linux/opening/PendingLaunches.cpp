#include "platform/linux/opening/PendingLaunches.h"

namespace tavo {

std::shared_ptr<PendingLaunch> PendingLaunches::begin(const std::string& path, bool last) {
    std::erase_if(starts_, [](const auto& start) { return !start.second->lasts(); });
    if (starts_.contains(path)) {
        return nullptr;
    }
    auto start = last ? beginUnnoticed()
                      : std::make_shared<PendingLaunch>(PendingLaunch::Clock::time_point());
    starts_.emplace(path, start);
    return start;
}

std::shared_ptr<PendingLaunch> PendingLaunches::beginUnnoticed() const {
    return std::make_shared<PendingLaunch>(PendingLaunch::Clock::now() + time_);
}

}  // namespace tavo
