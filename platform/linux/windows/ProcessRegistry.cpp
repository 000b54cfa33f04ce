#include "platform/linux/windows/ProcessRegistry.h"

namespace tavo {

void ProcessRegistry::rememberStart(pid_t process, const std::string& identifier) {
    if (Known* const known = now(process); known != nullptr && known->startedAs.empty()) {
        known->startedAs = identifier;
    }
}

bool ProcessRegistry::isSame(pid_t process) const {
    const auto known = known_.find(process);
    return known == known_.end() || startTime_(process) == known->second.startTime;
}

std::optional<std::string> ProcessRegistry::executable(pid_t process) const {
    return isSame(process) ? processExecutable(process) : std::nullopt;
}

std::string ProcessRegistry::startedAs(pid_t process) const {
    const auto known = known_.find(process);
    return known != known_.end() && isSame(process) ? known->second.startedAs : std::string();
}

ProcessRegistry::Known* ProcessRegistry::now(pid_t process) {
    const auto startTime = startTime_(process);
    if (!startTime) {
        known_.erase(process);
        return nullptr;
    }
    Known& known = known_[process];
    if (known.startTime != *startTime) {
        known = {*startTime, {}};
    }
    return &known;
}

std::string ProcessStarts::of(pid_t process) {
    std::string itself = ofItself(process);
    const pid_t leader = itself.empty() ? sessionLeader(process) : 0;
    if (leader == 0 || leader == process) {
        return itself;
    }
    const auto [known, isNew] = leaders_.try_emplace(leader);
    if (isNew) {
        known->second = ofItself(leader);
    }
    return !known->second.empty() && isWrappedBy(process, leader) ? known->second : itself;
}

std::string ProcessStarts::ofItself(pid_t process) const {
    std::string told = processes_.startedAs(process);
    return told.empty() ? matcher_.identifierAt(processDesktopFile(process)) : told;
}

}  // namespace tavo
