// Answers of an X server over the toolkit's connection.
//
// Each call waits for the server. What asks while it may be held up by others has a connection of
// its own instead (XcbConnection).
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

#include <xcb/xcb.h>

namespace tavo {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

template<typename Reply>
using XcbReply = std::unique_ptr<Reply, FreeReply>;

// In the order of the names; XCB_ATOM_NONE for what the server refuses.
std::vector<xcb_atom_t> internAtoms(xcb_connection_t* connection,
                                    std::span<const char* const> names);

// The numbers of 32 bits in a property, a thousand at most; none when the window or the property
// is not there or is of another type.
std::vector<std::uint32_t> propertyNumbers(xcb_connection_t* connection, xcb_window_t window,
                                           xcb_atom_t property, xcb_atom_t type);

}  // namespace tavo
