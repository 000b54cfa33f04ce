// Where the session bus is, and whether it and the accessibility bus react.
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

// The same of the bus that screen readers use: the one in AT_SPI_BUS_ADDRESS, else the sockets that
// at-spi2-core has in XDG_RUNTIME_DIR for the display in DISPLAY and for none; one that answers is
// enough. True where there is no such socket, and for a bus that is somewhere else.
[[nodiscard]] bool accessibilityBusAnswers();

}  // namespace tavo
