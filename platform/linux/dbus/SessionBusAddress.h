// Where the session bus is.
#pragma once

#include <string>

namespace tavo {

// The address in DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in XDG_RUNTIME_DIR; "" when there
// is none that could be reached without starting one. A library asked for "the" session bus would
// start one of its own.
[[nodiscard]] std::string sessionBusAddress();

// The session bus as one process has it.
struct SessionBus {
    std::string address;  // as sessionBusAddress() gives it
    // Whether libraries find it as well. Else they find none, and what asks for the session bus by
    // its name gets none: the bus did not answer at first, and they would have waited for it.
    bool forLibraries = true;
};

// The file of the first unix socket that `address` names (D-Bus Specification, "Server
// Addresses"); "" when it names none.
[[nodiscard]] std::string socketFileOf(const std::string& address);

// Whether somebody at `address` begins the conversation that a bus begins, which is the matter of
// a moment; waits a second for it at most. True where that cannot be asked, as of addresses other
// than a unix socket's file.
[[nodiscard]] bool busAnswers(const std::string& address);

}  // namespace tavo
