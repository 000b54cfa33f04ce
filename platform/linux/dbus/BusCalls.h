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
// Activation"), and the last argument of its methods: floating, of type a{sv}. Leaves out what is
// empty, and what is not UTF-8, because D-Bus cannot carry that.
inline constexpr char kApplicationInterface[] = "org.freedesktop.Application";
GVariant* platformData(const std::string& startupId, const std::string& activationToken);

// Calls a method of the bus daemon and ignores the reply. Takes floating parameters.
void callBus(GDBusConnection* bus, const char* method, GVariant* parameters);

// The calls of one object. Those under way when it ends are cancelled, and their callers are not
// told. Lives on the thread of the GMainContext that answers arrive in.
class BusCalls {
public:
    // One of the two is null. Called on the same thread, never inside call().
    using Answered = std::function<void(Variant reply, GError* error)>;

    // D-Bus's own, 25 seconds; none at all.
    static constexpr std::chrono::milliseconds kUsualPatience{-1};
    static constexpr std::chrono::milliseconds kNoLimit{G_MAXINT};

    BusCalls();
    BusCalls(const BusCalls&) = delete;
    BusCalls& operator=(const BusCalls&) = delete;
    ~BusCalls() { cancel(); }

    // Takes floating parameters. A service that does not run is not started for the call. A reply
    // of another type than `replyType` is an error; null takes any.
    void call(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
              const char* replyType, Answered answered,
              std::chrono::milliseconds patience = kUsualPatience);

    // The same, but the bus starts the service if it can.
    void callStarting(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
                      const char* replyType, Answered answered,
                      std::chrono::milliseconds patience = kUsualPatience);

    // Ends the calls under way. More can be made afterwards.
    void cancel();

private:
    void send(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
              const char* replyType, Answered answered, std::chrono::milliseconds patience,
              GDBusCallFlags flags);

    GObjectPointer<GCancellable> cancellable_;
};

}  // namespace tavo
