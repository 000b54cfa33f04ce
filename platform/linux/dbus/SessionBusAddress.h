// Where the session bus is, and whether it reacts.
#pragma once

#include <string>

namespace tavo {

// The address in DBUS_SESSION_BUS_ADDRESS, else that of the socket "bus" in XDG_RUNTIME_DIR; ""
// when neither names a bus, and for "autolaunch:", which would start one.
[[nodiscard]] std::string sessionBusAddress();

// The file of the first unix socket that `address` names (D-Bus Specification, "Server
// Addresses"); "" when it names none.
[[nodiscard]] std::string socketFileOf(const std::string& address);

// Whether the bus at `address` answers the first message of D-Bus's authentication within a second;
// it usually does so in less than a millisecond. Other addresses than a unix socket's file are not
// asked; the answer is true for them.
[[nodiscard]] bool busAnswers(const std::string& address);

}  // namespace tavo
