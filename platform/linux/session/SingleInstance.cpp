#include "platform/linux/session/SingleInstance.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <poll.h>

#include <glib-unix.h>

#include "platform/MainQueue.h"
#include "platform/linux/dbus/GLibThread.h"
#include "platform/linux/dbus/SessionBusConnection.h"
#include "platform/linux/instance/InstanceBusName.h"
#include "platform/linux/instance/InstanceSocket.h"
#include "platform/linux/tray/StatusNotifierItem.h"
#include "platform/linux/tray/StatusNotifierWatch.h"

namespace tavo {
namespace {

// A start sends its message in the moment in which it connects.
constexpr std::chrono::milliseconds kMessagePatience{1000};

// Without a descriptor to spare nobody is let in. Whoever knocks meanwhile waits in the system's
// queue, with its message; this is shorter than it waits for an answer.
constexpr std::chrono::milliseconds kBeforeLettingIn{100};

}  // namespace

// Between the main thread and the presence's; what waits in the main queue finds it gone.
class SingleInstance::Shared : public std::enable_shared_from_this<SingleInstance::Shared> {
public:
    // The presence's thread.

    // Whether the request will be served: not any more, once this process gives up.
    bool take(const StartRequest& request) {
        const std::lock_guard lock(mutex_);
        if (ended_) {
            return false;
        }
        requests_.push_back(request);
        announce();
        return true;
    }

    void setSuperseded() {
        const std::lock_guard lock(mutex_);
        superseded_ = true;
        announce();
    }

    void setOwned(bool owned) {
        const std::lock_guard lock(mutex_);
        if (std::exchange(owned_, owned) != owned) {
            changed_ = true;
            announce();
        }
    }

    void setNotifierHost(bool host) {
        const std::lock_guard lock(mutex_);
        if (std::exchange(notifierHost_, host) != host) {
            changed_ = true;
            announce();
        }
    }

    // Comes before the host that it belongs to.
    void setNotifierProcess(pid_t process) {
        const std::lock_guard lock(mutex_);
        notifierProcess_ = process;
    }

    void addClick(const StatusItemClick& click) {
        const std::lock_guard lock(mutex_);
        clicks_.push_back(click);
        announce();
    }

    // The main thread.

    void serve(MainQueue& mainQueue, Events events) {
        events_ = std::move(events);
        const std::lock_guard lock(mutex_);
        mainQueue_ = &mainQueue;
        if (!requests_.empty() || !clicks_.empty() || superseded_ || changed_) {
            announce();
        }
    }

    void stopServing() {
        events_ = {};
        const std::lock_guard lock(mutex_);
        mainQueue_ = nullptr;
    }

    bool endUnlessAsked() {
        const std::lock_guard lock(mutex_);
        ended_ = requests_.empty();
        return ended_;
    }

    template<typename Value>
    Value read(Value Shared::*member) const {
        const std::lock_guard lock(mutex_);
        return this->*member;
    }

    bool owned_ = false;
    bool superseded_ = false;
    std::optional<bool> notifierHost_;
    pid_t notifierProcess_ = 0;

private:
    // With the mutex held.
    void announce() {
        if (mainQueue_ == nullptr || std::exchange(announced_, true)) {
            return;
        }
        mainQueue_->async([weak = weak_from_this()] {
            if (const auto shared = weak.lock()) {
                shared->deliver();
            }
        });
    }

    void deliver() {
        std::vector<StartRequest> requests;
        std::vector<StatusItemClick> clicks;
        bool superseded = false;
        bool changed = false;
        {
            const std::lock_guard lock(mutex_);
            announced_ = false;
            if (mainQueue_ == nullptr) {
                return;
            }
            requests.swap(requests_);
            clicks.swap(clicks_);
            superseded = superseded_;
            changed = std::exchange(changed_, false);
        }
        if (changed) {
            events_.changed();
        }
        // Starts in quick succession want one window; the latest click is the one it answers.
        if (!requests.empty()) {
            events_.activated(requests.back());
        }
        for (const StatusItemClick& click : clicks) {
            events_.itemClicked(click);
        }
        if (superseded) {
            events_.superseded();
        }
    }

    mutable std::mutex mutex_;
    std::vector<StartRequest> requests_;
    std::vector<StatusItemClick> clicks_;
    MainQueue* mainQueue_ = nullptr;
    bool announced_ = false;
    bool changed_ = false;
    bool ended_ = false;
    Events events_;  // the main thread's
};

// What lives on the thread.
class SingleInstance::Presence {
public:
    Presence(std::shared_ptr<Shared> shared, std::unique_ptr<InstanceSocket> socket,
             const std::string& address, const StartRequest& request)
        : shared_(std::move(shared)),
          socket_(std::move(socket)),
          listens_(socket_ != nullptr),
          thread_(std::make_unique<GLibThread>()),
          link_(*thread_, address,
                {.connected = [this](GDBusConnection* bus) { connected(bus); },
                 .none = [this] { lost(); }}),
          name_(*thread_, request,
                {.activated = [this](const StartRequest& asked) { return shared_->take(asked); },
                 .superseded = [this] { shared_->setSuperseded(); },
                 .owned = [this] { shared_->setOwned(true); }}),
          notifiers_(*thread_,
                     {.host = [this](bool host) { shared_->setNotifierHost(host); },
                      .process = [this](pid_t process) { shared_->setNotifierProcess(process); }}) {
        thread_->post([this] {
            if (socket_) {
                listen();
            }
            link_.connect();
        });
    }

    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;

    ~Presence() {
        thread_->postAndWait([this] { leave(); });
        thread_.reset();
    }

    // What follows is for the main thread.

    [[nodiscard]] bool listens() const { return listens_; }

    // From now on there is somebody to show the window.
    void serve() {
        thread_->post([this] { answerHeld(); });
    }

    // A start does not wait long for an answer; what it has said by then counts all the same.
    void hearAll() {
        thread_->postAndWait([this] {
            while (socket_ && isReadable(socket_->listener()) && admit()) {
            }
            for (auto caller = callers_.begin(); caller != callers_.end();) {
                const int connection = (caller++)->first;
                if (isReadable(connection)) {
                    hear(connection);
                }
            }
        });
    }

    void offerItem(StatusItemContent item) {
        thread_->post([this, item = std::move(item)]() mutable {
            item_ = std::make_unique<StatusNotifierItem>(
                std::move(item),
                [this](const StatusItemClick& click) { shared_->addClick(click); });
            if (link_.connection() != nullptr) {
                item_->follow(link_.connection());
            }
        });
    }

    void repaintItem(std::vector<StatusItemImage> images) {
        thread_->post([this, images = std::move(images)]() mutable {
            if (item_) {
                item_->repaint(std::move(images));
            }
        });
    }

    void withdrawItem() {
        thread_->post([this] { item_.reset(); });
    }

private:
    struct Caller {
        FileDescriptor connection;
        ScopedSource readable;
        ScopedSource late;
    };

    template<typename Data>
    static ScopedSource watch(int descriptor, GUnixFDSourceFunc called, Data* data) {
        GSource* const source = g_unix_fd_source_new(descriptor, G_IO_IN);
        g_source_set_callback(source, G_SOURCE_FUNC(called), data, nullptr);
        g_source_attach(source, g_main_context_get_thread_default());
        return ScopedSource(source);
    }

    void listen() { listener_ = watch(socket_->listener(), &Presence::knocked, this); }

    // A listener that stays readable, because nobody could be let in, would be told of without end.
    static gboolean knocked(gint listener, GIOCondition /*condition*/, gpointer data) {
        Presence& self = *static_cast<Presence*>(data);
        if (!self.admit() && isReadable(listener)) {
            self.listener_.end();
            self.pause_ = self.thread_->after(kBeforeLettingIn, [&self] { self.listen(); });
        }
        return G_SOURCE_CONTINUE;
    }

    static gboolean spoke(gint connection, GIOCondition /*condition*/, gpointer data) {
        static_cast<Presence*>(data)->hear(connection);
        return G_SOURCE_REMOVE;
    }

    static bool isReadable(int descriptor) {
        pollfd now = {.fd = descriptor, .events = POLLIN, .revents = 0};
        return ::poll(&now, 1, 0) == 1;
    }

    bool admit() {
        FileDescriptor connection = socket_->accept();
        const int key = connection.get();
        if (!connection.valid()) {
            return false;
        }
        callers_.insert_or_assign(
            key,
            Caller{.connection = std::move(connection),
                   .readable = watch(key, &Presence::spoke, this),
                   .late = thread_->after(kMessagePatience, [this, key] { callers_.erase(key); })});
        return true;
    }

    void hear(int connection) {
        const auto caller = callers_.find(connection);
        const auto request = readStartRequest(connection);
        if (request && shared_->take(*request)) {
            answer(std::move(caller->second.connection));
        }
        callers_.erase(caller);
    }

    void answer(FileDescriptor caller) {
        if (shows_) {
            confirmStartRequest(caller.get());
        } else {
            holdStartRequest(caller.get());
            held_.push_back(std::move(caller));
        }
    }

    void answerHeld() {
        shows_ = true;
        for (const FileDescriptor& caller : held_) {
            confirmStartRequest(caller.get());
        }
        held_.clear();
        name_.answerHeld();
    }

    void connected(GDBusConnection* bus) {
        name_.claim(bus);
        notifiers_.follow(bus);
        if (item_) {
            item_->follow(bus);
        }
    }

    void lost() {
        notifiers_.leave();
        if (item_) {
            item_->leave();
        }
        shared_->setOwned(false);
        shared_->setNotifierHost(false);
    }

    void leave() {
        listener_.end();
        pause_.end();
        callers_.clear();
        held_.clear();
        socket_.reset();
        name_.leave();
        notifiers_.leave();
        item_.reset();
        link_.leave();
    }

    const std::shared_ptr<Shared> shared_;
    std::unique_ptr<InstanceSocket> socket_;
    const bool listens_;
    std::unique_ptr<GLibThread> thread_;
    SessionBusConnection link_;
    InstanceBusName name_;
    StatusNotifierWatch notifiers_;
    std::unique_ptr<StatusNotifierItem> item_;  // while it is offered
    ScopedSource listener_;
    ScopedSource pause_;  // instead of it, for a moment
    std::map<int, Caller> callers_;
    bool shows_ = false;
    std::vector<FileDescriptor> held_;  // starts that wait until it is sure that the window comes
};

SingleInstance::SingleInstance(std::unique_ptr<InstanceSocket> socket)
    : socket_(std::move(socket)), shared_(std::make_shared<Shared>()) {}

SingleInstance::~SingleInstance() = default;

void SingleInstance::attend(const std::string& address, const StartRequest& request) {
    if (socket_) {
        socket_->listen();
    }
    presence_ = std::make_unique<Presence>(shared_, std::move(socket_), address, request);
}

void SingleInstance::serve(MainQueue& mainQueue, Events events) {
    shared_->serve(mainQueue, std::move(events));
    if (presence_) {
        presence_->serve();
    }
}

void SingleInstance::stopServing() {
    shared_->stopServing();
}

bool SingleInstance::superseded() const {
    return shared_->read(&Shared::superseded_);
}

bool SingleInstance::reachable() const {
    return (presence_ && presence_->listens()) || shared_->read(&Shared::owned_);
}

std::optional<bool> SingleInstance::notifierHost() const {
    return shared_->read(&Shared::notifierHost_);
}

pid_t SingleInstance::notifierProcess() const {
    return shared_->read(&Shared::notifierProcess_);
}

void SingleInstance::offerItem(StatusItemContent item) {
    if (presence_) {
        presence_->offerItem(std::move(item));
    }
}

void SingleInstance::repaintItem(std::vector<StatusItemImage> images) {
    if (presence_) {
        presence_->repaintItem(std::move(images));
    }
}

void SingleInstance::withdrawItem() {
    if (presence_) {
        presence_->withdrawItem();
    }
}

bool SingleInstance::endUnlessAsked() {
    if (presence_) {
        presence_->hearAll();
    }
    if (!superseded() && !shared_->endUnlessAsked()) {
        return false;
    }
    presence_.reset();
    return true;
}

}  // namespace tavo
