#include "platform/linux/opening/ApplicationStart.h"

#include "platform/linux/opening/SystemdScope.h"

namespace tavo {

void superviseProgram(GLibThread& thread, const ApplicationStart& start,
                      const RunningApplication& running,
                      std::function<void(std::optional<int>)> ended) {
    const pid_t process = running.processIdentifier;
    // The bus may answer long after the program has ended and its number means another one.
    const auto runs = std::make_shared<bool>(true);
    start.began(running);
    thread.watchChild(process, [runs, ended = std::move(ended)](std::optional<int> status) {
        *runs = false;
        ended(status);
    });
    thread.whenConnected([&thread, runs, identifier = start.identifier, process] {
        if (*runs) {
            moveToScope(thread, identifier, process);
        }
    });
}

}  // namespace tavo
