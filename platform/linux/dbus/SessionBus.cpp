#include "platform/linux/dbus/SessionBus.h"

#include <array>
#include <filesystem>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

#include "platform/linux/dbus/SessionBusAddress.h"

namespace tavo {
namespace {

// A bus creates its socket file before it listens there. Each pause is twice the one before; all
// of them come to a little more than a second.
constexpr int kTries = 8;
constexpr std::chrono::milliseconds kFirstPause{5};

// How long the destructor waits for a cancelled attempt to connect to end, and how long for the
// last messages of a connection to be sent.
constexpr std::chrono::milliseconds kFarewell{200};

}  // namespace

SessionBus::SessionBus(std::string address)
    : address_(std::move(address)), cancellable_(g_cancellable_new()), known_(address_.empty()) {
    if (!address_.empty()) {
        thread_.post([this] { attempt(); });
    }
}

SessionBus::~SessionBus() {
    thread_.postAndWait([this] { leave(); });
}

Subscription SessionBus::follow(std::function<void(GDBusConnection*)> changed) {
    Subscription subscription = changed_.subscribe(changed);
    if (known_) {
        changed(bus_.get());
    }
    return subscription;
}

void SessionBus::ask(std::chrono::milliseconds patience, std::function<void(State)> answered) {
    if (address_.empty()) {
        answered(State::none);
        return;
    }
    if (!std::exchange(asking_, true)) {
        asked_ = Clock::now();
        bus_ ? ping() : attempt();
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(asked_ + patience - Clock::now());
    if (left.count() <= 0) {
        answered(State::silent);
        return;
    }
    const auto question = questions_.insert(questions_.end(), {std::move(answered), {}});
    question->late = thread_.after(left, [this, question] {
        const auto late = std::move(question->answered);
        questions_.erase(question);
        late(State::silent);
    });
}

void SessionBus::answerQuestions() {
    asking_ = false;
    const State state =
        bus_ && g_dbus_connection_is_closed(bus_.get()) == FALSE ? State::connected : State::none;
    for (const Question& question : std::exchange(questions_, {})) {
        question.answered(state);
    }
}

// Every bus answers GetId, and an error is an answer too.
void SessionBus::ping() {
    calls_.call(
        bus_.get(), {kBusName, kBusPath, kBusName, "GetId"}, nullptr, nullptr,
        [this](const Variant&, GError*) { answerQuestions(); }, BusCalls::kNoLimit);
}

void SessionBus::attempt() {
    // A second connection would find the bus names of the first one taken.
    if (bus_ || std::exchange(attempting_, true)) {
        return;
    }
    if (!std::exchange(asking_, true)) {
        asked_ = Clock::now();
    }
    g_dbus_connection_new_for_address(
        address_.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, cancellable_.get(), &SessionBus::connected, this);
}

void SessionBus::connected(GObject* /*source*/, GAsyncResult* result, gpointer data) {
    SessionBus& self = *static_cast<SessionBus*>(data);
    GObjectPointer<GDBusConnection> bus(g_dbus_connection_new_for_address_finish(result, nullptr));
    self.attempting_ = false;
    if (self.leaving_) {
        return;
    }
    if (bus) {
        self.use(std::move(bus));
    } else if (self.triesLeft_ > 0) {
        self.tryAgainSoon();
    } else {
        self.watchSocketFile();
        self.announce();
    }
}

void SessionBus::use(GObjectPointer<GDBusConnection> bus) {
    retry_.end();
    folderChanges_.end();
    folder_.close();
    triesLeft_ = 0;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    bus_ = std::move(bus);
    closedHandler_ = g_signal_connect(bus_.get(), "closed", G_CALLBACK(&SessionBus::closed), this);
    announce();
}

void SessionBus::closed(GDBusConnection* bus, gboolean /*vanished*/, GError* /*error*/,
                        gpointer data) {
    SessionBus& self = *static_cast<SessionBus*>(data);
    g_signal_handler_disconnect(bus, self.closedHandler_);
    // Kept until this function returns: followers still unregister their objects from the lost
    // connection.
    const auto lost = std::move(self.bus_);
    self.calls_.cancel();
    self.watchSocketFile();
    self.announce();
}

void SessionBus::announce() {
    known_ = true;
    changed_.emit(bus_.get());
    answerQuestions();
}

void SessionBus::watchSocketFile() {
    const std::filesystem::path file = socketFileOf(address_);
    if (file.empty() || folder_.valid()) {
        return;
    }
    folder_ = FileDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (::inotify_add_watch(folder_.get(), file.parent_path().c_str(), IN_CREATE | IN_MOVED_TO) <
        0) {
        folder_.close();
        return;
    }
    folderChanges_ = thread_.whenReadable(folder_.get(), [this] { readSocketEvents(); });
    // The socket file may have come back before its folder was watched.
    if (::access(file.c_str(), F_OK) == 0) {
        triesLeft_ = kTries;
        tryAgainSoon();
    }
}

void SessionBus::readSocketEvents() {
    const std::string name = std::filesystem::path(socketFileOf(address_)).filename();
    bool came = false;
    alignas(inotify_event) std::array<char, 4096> bytes;
    for (ssize_t size = 0; (size = ::read(folder_.get(), bytes.data(), bytes.size())) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(bytes.data() + at);
            came = came || (event->len > 0 && name == event->name);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
    if (came) {
        triesLeft_ = kTries;
        tryAgainSoon();
    }
}

void SessionBus::tryAgainSoon() {
    const auto pause = kFirstPause * (1 << (kTries - triesLeft_));
    --triesLeft_;
    retry_ = thread_.after(pause, [this] { attempt(); });
}

void SessionBus::leave() {
    leaving_ = true;
    retry_.end();
    folderChanges_.end();
    questions_.clear();
    calls_.cancel();
    g_cancellable_cancel(cancellable_.get());
    thread_.runUntil([this] { return !attempting_; }, kFarewell);
    if (!bus_) {
        return;
    }
    // Closing the connection first sends the messages that still wait.
    g_signal_handler_disconnect(bus_.get(), closedHandler_);
    g_dbus_connection_close(bus_.get(), nullptr, nullptr, nullptr);
    thread_.runUntil([this] { return g_dbus_connection_is_closed(bus_.get()) != FALSE; },
                     kFarewell);
    bus_.reset();
}

}  // namespace tavo
