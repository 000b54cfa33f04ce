// Calls of the bus itself, and not of somebody on it.
#pragma once

#include <chrono>

#include <gio/gio.h>

#include "platform/linux/dbus/GLibThread.h"

namespace tavo {

inline constexpr char kBusName[] = "org.freedesktop.DBus";  // and its interface's
inline constexpr char kBusPath[] = "/org/freedesktop/DBus";

// D-Bus Specification, "org.freedesktop.DBus.RequestName": whoever does not get the name at once
// does not get it later either.
inline constexpr guint32 kDoNotQueue = 4;

// Takes floating parameters. What the bus answers is nobody's concern.
void callBus(GDBusConnection* bus, const char* method, GVariant* parameters);

// The same with an answer of type `answer`, which comes to `answered` on the thread: a call between
// its beginCall() and the endCall() with which `answered` begins. The bus has `patience`, D-Bus's
// usual one unless told.
void askBus(GLibThread& thread, GDBusConnection* bus, const char* method, GVariant* parameters,
            const char* answer, GAsyncReadyCallback answered, gpointer data,
            std::chrono::milliseconds patience = std::chrono::milliseconds(-1));

}  // namespace tavo
