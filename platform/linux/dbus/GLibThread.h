// A thread with a GMainContext of its own, whatever event loop the rest of the program has.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <gio/gio.h>

namespace tavo {

// An attached GSource, destroyed together with this object. Use it on the thread of its
// GMainContext.
class ScopedSource {
public:
    ScopedSource() = default;
    // Takes over the caller's reference.
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

// Runs jobs and serves its GMainContext, which is the thread's default one. No wake-ups while there
// is nothing to do. A job must not wait for a disk or a server: other jobs and the end of the
// program would wait for it.
class GLibThread {
public:
    GLibThread();
    GLibThread(const GLibThread&) = delete;
    GLibThread& operator=(const GLibThread&) = delete;
    // Waits for the job that runs, and drops those that wait.
    ~GLibThread();

    // Any thread. `job` runs on the GLib thread, after all jobs posted before.
    void post(std::function<void()> job);

    // Like post(), but returns when `job` has run. Any thread but the GLib thread.
    void postAndWait(const std::function<void()>& job);

    // Only jobs and callbacks on the GLib thread may call the functions below.

    // Calls `callback` once, after `delay`, unless the returned object is destroyed before.
    [[nodiscard]] ScopedSource after(std::chrono::milliseconds delay,
                                     std::function<void()> callback);

    // Calls `readable` whenever `descriptor` can be read, until the returned object is destroyed,
    // which may happen inside the callback. The descriptor must stay open until then.
    [[nodiscard]] ScopedSource whenReadable(int descriptor, std::function<void()> readable);

    // Serves the GMainContext, but no jobs, until `condition` holds or `patience` has passed.
    void runUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience);

private:
    void run();
    void runJobs();
    ScopedSource attach(GSource* source);

    std::unique_ptr<GMainContext, decltype(&g_main_context_unref)> context_;

    std::mutex mutex_;
    std::vector<std::function<void()>> jobs_;  // under the mutex
    bool ending_ = false;                      // under the mutex

    std::thread thread_;  // the last member: it uses the others
};

}  // namespace tavo
