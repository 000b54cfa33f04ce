// The timers, child processes and bus calls of one workspace's openings, which live on the bus
// thread. What may wait for anything else runs in the background.
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
    // `bus` must outlive this object.
    explicit OpeningThread(SessionBus& bus) : bus_(bus) { wayBack_->thread = &bus.thread(); }
    OpeningThread(const OpeningThread&) = delete;
    OpeningThread& operator=(const OpeningThread&) = delete;
    // Waits for the jobs posted so far, but not for work in the background. Then stops watching
    // children and cancels bus calls. Do not destroy it on the bus thread.
    ~OpeningThread();

    using Job = std::function<void()>;

    // Any thread.
    void post(Job job) { bus_.thread().post(std::move(job)); }

    // For work that may block on a disk or an X server. Runs `work` on a thread of its own, then
    // the job that it returns, if any, on the bus thread. If this object is destroyed meanwhile,
    // `work` still runs to its end, but its job is dropped. Any thread.
    void inBackground(std::function<Job()> work);

    // The functions below are for the bus thread only.

    // Like GLibThread::after(), but `callback` is not called once this object is destroyed.
    [[nodiscard]] ScopedSource after(std::chrono::milliseconds delay,
                                     std::function<void()> callback);

    // Reaps the child `process` when it ends, and then calls `ended`, perhaps inside this function.
    // `status` is what waitpid(2) gave; absent when the system reaped the child first, because
    // SIGCHLD is ignored, and for a process that is no child of ours. Where the kernel refuses a
    // pidfd for a running child, a later call reaps it, and `ended` is not called. Of several
    // watches of one process the last one counts.
    void watchChild(pid_t process, std::function<void(std::optional<int> status)> ended);

    // Like SessionBus::ask(), but `answered` is not called once this object is destroyed.
    void askBus(std::chrono::milliseconds patience,
                std::function<void(SessionBus::State)> answered);

    // Null while there is no connection to the bus.
    [[nodiscard]] GDBusConnection* connection() { return bus_.connection(); }

    // The calls are cancelled when this object is destroyed.
    [[nodiscard]] BusCalls& calls() { return *calls_; }

private:
    // Leads to the bus thread, for background work that may outlast this object.
    struct WayBack {
        std::mutex mutex;
        GLibThread* thread = nullptr;  // under the mutex; null once the object is destroyed
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
