// A thread of our own for GLib.
//
// GLib's starts block for milliseconds, its asynchronous calls answer only where its event loop
// runs, and children must be reaped for as long as the program lives. All three happen here, with
// an event loop that nobody else uses, whatever event loop the rest of the program has. Idle, it
// never wakes.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

#include <gio/gio.h>

namespace tavo {

// A source in the thread's event loop, which leaves it when this ends. Lives on that thread.
class ScopedSource {
public:
    ScopedSource() = default;
    explicit ScopedSource(GSource* source) : source_(source) {}
    void end() { source_.reset(); }

private:
    struct Destroy {
        void operator()(GSource* source) const {
            g_source_destroy(source);
            g_source_unref(source);
        }
    };
    std::unique_ptr<GSource, Destroy> source_;
};

// Ending it waits for the job under way, drops those still waiting, and lets asynchronous calls
// under way end as cancelled.
class GLibThread {
public:
    // `ownBus`: where the session bus is if libraries do not find it; "" for the one that they
    // find.
    explicit GLibThread(std::string ownBus = "");
    GLibThread(const GLibThread&) = delete;
    GLibThread& operator=(const GLibThread&) = delete;
    ~GLibThread();

    // Any thread. `job` runs on this one, after all given before.
    void post(std::function<void()> job);

    // Any other thread, before this one's end begins. Returns when `job` has run, as it does when
    // posted.
    void postAndWait(const std::function<void()>& job);

    // What follows is for jobs and callbacks on this thread.

    [[nodiscard]] ScopedSource after(std::chrono::milliseconds delay,
                                     std::function<void()> callback);

    // Reaps the child `process` when it ends, and then tells how (a status as waitpid gives it;
    // none when the system reaped it first, because SIGCHLD is ignored); that may be inside the
    // call. Should the system refuse to watch it, it is reaped at one of the next calls, and
    // nothing is told. Of a process that is no child of ours the end alone is told. Of several
    // watches of one process the last one counts.
    void watchChild(pid_t process, std::function<void(std::optional<int> status)> ended);

    enum class Bus { connected, none, silent };

    // The session bus: connected, not there, or not answering. It has `patience` from the first
    // question, in which timers and children go on; later ones do not wait anew, and the attempt
    // goes on by itself. Losing the connection does not end the program, as it would by GLib's own
    // rule.
    [[nodiscard]] Bus sessionBus(std::chrono::milliseconds patience);

    // Never waits: `connected` is called as soon as the session bus is, which may be inside the
    // call, and not at all when there turns out to be none.
    void whenConnected(std::function<void()> connected);

    // The session bus after one of these two has said that it is connected; null before.
    [[nodiscard]] GDBusConnection* connection() { return bus_.get(); }

    // Between these two a call is under way that `cancellable()` ends.
    void beginCall() { ++calls_; }
    void endCall() { --calls_; }
    [[nodiscard]] GCancellable* cancellable() { return cancellable_.get(); }

private:
    struct Unref {
        void operator()(gpointer object) const { g_object_unref(object); }
    };

    class BusAttempt;
    struct Child;

    void run();
    void runJobs();
    void reapUnwatched();

    void attemptBus();

    // What has come of the attempt, which is over.
    Bus takeBus();

    // GLib keeps one connection for the whole process for as long as anybody has a hold on it; its
    // own unfinished business in this event loop counts, and is finished here.
    void releaseBus();

    const std::string ownBus_;
    std::unique_ptr<GMainContext, decltype(&g_main_context_unref)> context_;
    std::unique_ptr<GCancellable, Unref> cancellable_;
    std::unique_ptr<GDBusConnection, Unref> bus_;
    std::unique_ptr<BusAttempt> attempt_;  // under way
    std::vector<std::function<void()>> whenConnected_;
    std::map<pid_t, ScopedSource> children_;
    std::vector<pid_t> unwatched_;
    int calls_ = 0;

    std::mutex mutex_;
    std::vector<std::function<void()>> jobs_;  // under the mutex
    bool ending_ = false;                      // under the mutex

    std::thread thread_;  // the last member: it uses the others
};

}  // namespace tavo
