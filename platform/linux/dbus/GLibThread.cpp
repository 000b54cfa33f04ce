#include "platform/linux/dbus/GLibThread.h"

#include <cerrno>
#include <condition_variable>
#include <utility>

#include <sys/wait.h>

#include <glib-unix.h>

#include "platform/linux/system/Pidfd.h"
#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

constexpr int kFarewellRounds = 20;
constexpr std::chrono::milliseconds kFarewellRound{5};

using Callback = std::function<void()>;

GSource* attachTimer(GMainContext* context, std::chrono::milliseconds delay, Callback callback) {
    GSource* const source = g_timeout_source_new(static_cast<guint>(delay.count()));
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            (*static_cast<Callback*>(data))();
            return G_SOURCE_REMOVE;
        },
        new Callback(std::move(callback)),
        [](gpointer data) { delete static_cast<Callback*>(data); });
    g_source_attach(source, context);
    return source;
}

// Whether the child is gone; its status, if it could be had.
bool reap(pid_t process, std::optional<int>& status) {
    int word = 0;
    const pid_t result = ::waitpid(process, &word, WNOHANG);
    if (result == process) {
        status = word;
    }
    return result == process || (result < 0 && errno == ECHILD);
}

}  // namespace

struct GLibThread::Child {
    GLibThread& thread;
    pid_t process;
    FileDescriptor handle;
    std::function<void(std::optional<int>)> ended;

    static gboolean readable(gint /*descriptor*/, GIOCondition /*condition*/, gpointer data) {
        Child& child = *static_cast<Child*>(data);
        std::optional<int> status;
        if (!reap(child.process, status)) {
            return G_SOURCE_CONTINUE;
        }
        child.ended(status);
        child.thread.children_.erase(child.process);
        return G_SOURCE_REMOVE;
    }
};

// An attempt to reach the session bus, which answers in the thread's own event loop: there the
// connection also reports its loss.
class GLibThread::BusAttempt {
public:
    // `address` as GLibThread has it; `told` is called when it is over.
    BusAttempt(GMainContext* context, const std::string& address, Callback told)
        : context_(context), told_(std::move(told)), cancellable_(g_cancellable_new()) {
        if (address.empty()) {
            g_bus_get(G_BUS_TYPE_SESSION, cancellable_, answered<g_bus_get_finish>, this);
        } else {
            g_dbus_connection_new_for_address(
                address.c_str(),
                static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                  G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                nullptr, cancellable_, answered<g_dbus_connection_new_for_address_finish>, this);
        }
    }
    BusAttempt(const BusAttempt&) = delete;
    BusAttempt& operator=(const BusAttempt&) = delete;
    ~BusAttempt() { g_object_unref(cancellable_); }

    [[nodiscard]] bool over() const { return over_; }

    // Whether it is over when `patience` has passed since it began; timers and children go on
    // meanwhile.
    bool overWithin(std::chrono::milliseconds patience) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(began_ + patience - Clock::now());
        return over_ || (left.count() > 0 && overAfter(left));
    }

    bool overAfter(std::chrono::milliseconds patience) {
        bool late = false;
        const ScopedSource timer(attachTimer(context_, patience, [&late] { late = true; }));
        while (!over_ && !late) {
            g_main_context_iteration(context_, TRUE);
        }
        return over_;
    }

    // The connection, for the caller to unreference; null if there is none.
    GDBusConnection* take() { return std::exchange(bus_, nullptr); }

    // GLib cannot be kept from finishing an attempt for which it holds pointers to this. One that
    // heeds no cancelling is left to it.
    static void abandon(std::unique_ptr<BusAttempt> attempt) {
        g_cancellable_cancel(attempt->cancellable_);
        if (!attempt->overAfter(kFarewellRounds * kFarewellRound)) {
            [[maybe_unused]] BusAttempt* const left = attempt.release();
        } else if (GDBusConnection* const bus = attempt->take()) {
            g_object_unref(bus);
        }
    }

private:
    template<GDBusConnection* (*finish)(GAsyncResult*, GError**)>
    static void answered(GObject* /*source*/, GAsyncResult* result, gpointer data) {
        BusAttempt& self = *static_cast<BusAttempt*>(data);
        self.bus_ = finish(result, nullptr);
        if (self.bus_ != nullptr) {
            g_dbus_connection_set_exit_on_close(self.bus_, FALSE);
        }
        self.over_ = true;
        self.told_();
    }

    using Clock = std::chrono::steady_clock;

    GMainContext* context_;
    const Callback told_;
    const Clock::time_point began_ = Clock::now();
    GCancellable* cancellable_;
    GDBusConnection* bus_ = nullptr;
    bool over_ = false;
};

GLibThread::GLibThread(std::string ownBus)
    : ownBus_(std::move(ownBus)),
      context_(g_main_context_new(), g_main_context_unref),
      cancellable_(g_cancellable_new()) {
    thread_ = std::thread([this] { run(); });
}

GLibThread::~GLibThread() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        jobs_.clear();
    }
    g_cancellable_cancel(cancellable_.get());
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
    while (calls_ > 0) {
        g_main_context_iteration(context_.get(), TRUE);
    }
    if (attempt_) {
        BusAttempt::abandon(std::move(attempt_));
    }
    if (bus_) {
        releaseBus();
    }
    children_.clear();
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
    return ScopedSource(attachTimer(context_.get(), delay, std::move(callback)));
}

void GLibThread::watchChild(pid_t process, std::function<void(std::optional<int>)> ended) {
    reapUnwatched();
    FileDescriptor handle = openPidfd(process);
    if (!handle.valid()) {
        std::optional<int> status;
        if (reap(process, status)) {
            ended(status);
        } else {
            unwatched_.push_back(process);
        }
        return;
    }
    GSource* const source = g_unix_fd_source_new(handle.get(), G_IO_IN);
    g_source_set_callback(source, G_SOURCE_FUNC(Child::readable),
                          new Child{*this, process, std::move(handle), std::move(ended)},
                          [](gpointer data) { delete static_cast<Child*>(data); });
    g_source_attach(source, context_.get());
    children_.insert_or_assign(process, ScopedSource(source));
}

void GLibThread::reapUnwatched() {
    std::erase_if(unwatched_, [](pid_t process) {
        std::optional<int> status;
        return reap(process, status);
    });
}

void GLibThread::releaseBus() {
    GWeakRef remains;
    g_weak_ref_init(&remains, bus_.get());
    bus_.reset();
    for (int round = 0; round < kFarewellRounds; ++round) {
        gpointer const bus = g_weak_ref_get(&remains);
        if (bus == nullptr) {
            break;
        }
        g_object_unref(bus);
        bool over = false;
        const ScopedSource timer = after(kFarewellRound, [&over] { over = true; });
        while (!over) {
            g_main_context_iteration(context_.get(), TRUE);
        }
    }
    g_weak_ref_clear(&remains);
}

GLibThread::Bus GLibThread::sessionBus(std::chrono::milliseconds patience) {
    attemptBus();
    if (bus_) {
        return Bus::connected;
    }
    return attempt_->overWithin(patience) ? takeBus() : Bus::silent;
}

void GLibThread::whenConnected(Callback connected) {
    attemptBus();
    if (bus_) {
        connected();
    } else {
        whenConnected_.push_back(std::move(connected));
    }
}

void GLibThread::attemptBus() {
    if (bus_ && g_dbus_connection_is_closed(bus_.get()) != FALSE) {
        releaseBus();
    }
    if (!bus_ && !attempt_) {
        // By a job, because whoever waits for the attempt is in the middle of it.
        attempt_ = std::make_unique<BusAttempt>(context_.get(), ownBus_, [this] {
            post([this] {
                if (attempt_ && attempt_->over()) {
                    takeBus();
                }
            });
        });
    }
}

GLibThread::Bus GLibThread::takeBus() {
    bus_.reset(std::exchange(attempt_, nullptr)->take());
    const std::vector<Callback> waiting = std::exchange(whenConnected_, {});
    if (!bus_) {
        return Bus::none;
    }
    // Still the lost one, if somebody else in this process holds on to it.
    if (g_dbus_connection_is_closed(bus_.get()) != FALSE) {
        return Bus::silent;
    }
    for (const Callback& connected : waiting) {
        connected();
    }
    return Bus::connected;
}

}  // namespace tavo
