// What the openings of one workspace have on the bus thread: timers, children and bus calls. What
// may wait for anything else runs in the background.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <sys/types.h>

#include "platform/linux/dbus/BusCalls.h"
#include "platform/linux/dbus/SessionBus.h"

namespace tavo {

class OpeningThread {
public:
    // `bus` outlives this.
    explicit OpeningThread(SessionBus& bus) : bus_(bus) { wayBack_->thread = &bus.thread(); }
    OpeningThread(const OpeningThread&) = delete;
    OpeningThread& operator=(const OpeningThread&) = delete;
    // Waits for the jobs posted so far, but not for work in the background; then ends children's
    // watches and calls. Not on the bus thread.
    ~OpeningThread();

    using Job = std::function<void()>;

    // Any thread.
    void post(Job job) { bus_.thread().post(std::move(job)); }

    // For what may wait for a disk or an X server. Runs `work` on a thread of its own, then the job
    // that it returns, if any, on the bus thread; that one is dropped when this has ended, and the
    // work goes on. Any thread.
    void inBackground(std::function<Job()> work);

    // What follows is for the bus thread.

    // As GLibThread does; not called once this has ended.
    [[nodiscard]] ScopedSource after(std::chrono::milliseconds delay,
                                     std::function<void()> callback);

    // Reaps the child `process` when it ends, and then tells how (a status as waitpid gives it;
    // none when the system reaped it first, because SIGCHLD is ignored); that may be inside the
    // call. Should the system refuse a pidfd, the child is reaped at one of the next calls, and
    // nothing is told. Of a process that is no child of ours the end alone is told. Of several
    // watches of one process the last one counts.
    void watchChild(pid_t process, std::function<void(std::optional<int> status)> ended);

    // As SessionBus does; not answered once this has ended.
    void askBus(std::chrono::milliseconds patience,
                std::function<void(SessionBus::State)> answered);

    // Null while there is none.
    [[nodiscard]] GDBusConnection* connection() { return bus_.connection(); }

    // They end with this.
    [[nodiscard]] BusCalls& calls() { return *calls_; }

private:
    // To the bus thread, for work that may outlast this.
    struct WayBack {
        std::mutex mutex;
        GLibThread* thread = nullptr;  // under the mutex; null once this has ended
    };
    struct Child;

    void childReadable(pid_t process);
    void reapUnwatched();

    SessionBus& bus_;
    const std::shared_ptr<WayBack> wayBack_ = std::make_shared<WayBack>();
    std::shared_ptr<BusCalls> calls_ = std::make_shared<BusCalls>();
    std::map<pid_t, std::shared_ptr<Child>> children_;
    std::vector<pid_t> unwatched_;
};

}  // namespace tavo
