// The program's one connection to the session bus, and the GLib thread that serves it.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <string>

#include <gio/gio.h>

#include "platform/linux/dbus/BusCalls.h"
#include "platform/linux/dbus/GLibPointers.h"
#include "platform/linux/dbus/GLibThread.h"
#include "platform/posix/FileDescriptor.h"
#include "support/Signal.h"

namespace tavo {

// A private connection, made at once and made anew when the bus returns. GLib's shared one would
// end the program together with the bus. Nothing polls: where the bus has a socket file, inotify
// tells of its return.
//
// Constructor, destructor and thread() are for the main thread, all else is for the bus thread.
// Objects that follow the bus must be destroyed before this one.
class SessionBus {
public:
    // `address` as sessionBusAddress() gives it; "" for no bus.
    explicit SessionBus(std::string address);
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    // Takes 0.4 seconds at most, even if the bus does not react: no job on the bus thread waits for
    // anything else.
    ~SessionBus();

    // Lives as long as this object. Connections deliver answers and signals in its GMainContext.
    [[nodiscard]] GLibThread& thread() { return thread_; }

    // Calls `changed` with each new connection, and with null when there turns out to be no bus or
    // the connection is lost. Calls it inside this function if the state is known already, and
    // afterwards until the subscription ends.
    [[nodiscard]] Subscription follow(std::function<void(GDBusConnection*)> changed);

    // Null while there is no connection.
    [[nodiscard]] GDBusConnection* connection() const { return bus_.get(); }

    enum class State { connected, none, silent };

    // Asks whether the bus reacts, and connects first if need be. Calls `answered` once, within
    // `patience` and perhaps inside this function; with `silent` when the bus did not react in that
    // time. `patience` counts from the first question that is still unanswered, so that a hanging
    // bus is waited for only once. `answered` is not called when this object is destroyed first.
    void ask(std::chrono::milliseconds patience, std::function<void(State)> answered);

private:
    using Clock = std::chrono::steady_clock;

    struct Question {
        std::function<void(State)> answered;
        ScopedSource late;
    };

    static void connected(GObject* source, GAsyncResult* result, gpointer data);
    static void closed(GDBusConnection* bus, gboolean vanished, GError* error, gpointer data);

    void attempt();
    void use(GObjectPointer<GDBusConnection> bus);
    void ping();
    void announce();
    void answerQuestions();
    void watchSocketFile();
    void readSocketEvents();
    void tryAgainSoon();
    void leave();

    const std::string address_;
    const GObjectPointer<GCancellable> cancellable_;
    GObjectPointer<GDBusConnection> bus_;
    gulong closedHandler_ = 0;
    bool known_;  // whether it is known if there is a bus
    bool attempting_ = false;
    bool leaving_ = false;
    Signal<GDBusConnection*> changed_;

    bool asking_ = false;  // an attempt or a ping is under way, since asked_
    Clock::time_point asked_;
    std::list<Question> questions_;
    BusCalls calls_;

    FileDescriptor folder_;  // inotify(7), which watches the socket file's folder
    ScopedSource folderChanges_;
    ScopedSource retry_;
    int triesLeft_ = 0;

    GLibThread thread_;  // the last member: it uses the others
};

}  // namespace tavo
