#include "platform/linux/dbus/GLibThread.h"

#include <condition_variable>
#include <utility>

#include <glib-unix.h>

namespace tavo {
namespace {

using Callback = std::function<void()>;

void deleteCallback(gpointer data) {
    delete static_cast<Callback*>(data);
}

}  // namespace

GLibThread::GLibThread() : context_(g_main_context_new(), g_main_context_unref) {
    thread_ = std::thread([this] { run(); });
}

GLibThread::~GLibThread() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        jobs_.clear();
    }
    g_main_context_wakeup(context_.get());
    thread_.join();
}

void GLibThread::post(Callback job) {
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    g_main_context_wakeup(context_.get());
}

void GLibThread::postAndWait(const Callback& job) {
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
    post([&] {
        job();
        const std::lock_guard lock(mutex);
        done = true;
        changed.notify_all();
    });
    std::unique_lock lock(mutex);
    changed.wait(lock, [&done] { return done; });
}

void GLibThread::run() {
    g_main_context_push_thread_default(context_.get());
    for (;;) {
        runJobs();
        {
            const std::lock_guard lock(mutex_);
            if (ending_) {
                break;
            }
            if (!jobs_.empty()) {
                continue;
            }
        }
        g_main_context_iteration(context_.get(), TRUE);
    }
    // Cancelled calls free what they hold in their callbacks.
    while (g_main_context_iteration(context_.get(), FALSE) != FALSE) {
    }
    g_main_context_pop_thread_default(context_.get());
}

void GLibThread::runJobs() {
    std::vector<Callback> jobs;
    {
        const std::lock_guard lock(mutex_);
        jobs.swap(jobs_);
    }
    for (const Callback& job : jobs) {
        job();
    }
}

ScopedSource GLibThread::after(std::chrono::milliseconds delay, Callback callback) {
    GSource* const source = g_timeout_source_new(static_cast<guint>(delay.count()));
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            (*static_cast<Callback*>(data))();
            return G_SOURCE_REMOVE;
        },
        new Callback(std::move(callback)), deleteCallback);
    return attach(source);
}

ScopedSource GLibThread::whenReadable(int descriptor, Callback readable) {
    GSource* const source = g_unix_fd_source_new(descriptor, G_IO_IN);
    const GUnixFDSourceFunc call = [](gint /*descriptor*/, GIOCondition /*condition*/,
                                      gpointer data) -> gboolean {
        (*static_cast<Callback*>(data))();
        return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(source, G_SOURCE_FUNC(call), new Callback(std::move(readable)),
                          deleteCallback);
    return attach(source);
}

ScopedSource GLibThread::attach(GSource* source) {
    g_source_attach(source, context_.get());
    return ScopedSource(source);
}

void GLibThread::runUntil(const std::function<bool()>& condition,
                          std::chrono::milliseconds patience) {
    bool late = false;
    const ScopedSource timer = after(patience, [&late] { late = true; });
    while (!condition() && !late) {
        g_main_context_iteration(context_.get(), TRUE);
    }
}

}  // namespace tavo
