// Method calls over a bus connection.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <gio/gio.h>

#include "platform/linux/dbus/GLibPointers.h"

namespace tavo {

// The bus daemon itself: its name, which is its interface too, and its object.
inline constexpr char kBusName[] = "org.freedesktop.DBus";
inline constexpr char kBusPath[] = "/org/freedesktop/DBus";

// D-Bus Specification, "org.freedesktop.DBus.RequestName": if another connection has the name, do
// not wait in line for it.
inline constexpr guint32 kDoNotQueue = 4;

struct BusMethod {
    const char* service;
    const char* path;
    const char* interface;
    const char* name;
};

// The interface by which desktops activate programs (Desktop Entry Specification, "D-Bus
// Activation").
inline constexpr char kApplicationInterface[] = "org.freedesktop.Application";
// The last argument of that interface's methods: floating, of type a{sv}. Leaves out texts that are
// empty or not UTF-8, which D-Bus cannot carry.
GVariant* platformData(const std::string& startupId, const std::string& activationToken);

// Calls a method of the bus daemon and ignores the reply. Takes floating parameters.
void callBus(GDBusConnection* bus, const char* method, GVariant* parameters);

// Makes method calls for its owner. Calls under way when this object is destroyed are cancelled,
// and `answered` is not called for them. Use it on the thread of the GMainContext that replies
// arrive in.
class BusCalls {
public:
    // Either `reply` or `error` is null. Called on the thread of the call, never inside it.
    using Answered = std::function<void(Variant reply, GError* error)>;

    // The usual time limit of D-Bus, 25 seconds.
    static constexpr std::chrono::milliseconds kUsualPatience{-1};
    // No time limit.
    static constexpr std::chrono::milliseconds kNoLimit{G_MAXINT};

    BusCalls();
    BusCalls(const BusCalls&) = delete;
    BusCalls& operator=(const BusCalls&) = delete;
    ~BusCalls() { cancel(); }

    // Takes floating parameters. The bus does not start a service that does not run. A reply of
    // another type than `replyType` is an error; null takes any type.
    void call(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
              const char* replyType, Answered answered,
              std::chrono::milliseconds patience = kUsualPatience);

    // Like call(), but the bus starts the service if it can.
    void callStarting(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
                      const char* replyType, Answered answered,
                      std::chrono::milliseconds patience = kUsualPatience);

    // Cancels the calls under way. More can be made afterwards.
    void cancel();

private:
    void send(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
              const char* replyType, Answered answered, std::chrono::milliseconds patience,
              GDBusCallFlags flags);

    GObjectPointer<GCancellable> cancellable_;
};

}  // namespace tavo
