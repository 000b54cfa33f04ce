// Somebody who is there and does not answer.
#pragma once

#include <string>

#include <sys/socket.h>
#include <sys/un.h>

#include <gtest/gtest.h>

#include "platform/linux/FileDescriptor.h"

namespace tavo::processes {

// A socket at `path` that accepts connections, as far as the system does that for it, and never
// says a word. Ends with its scope.
class SilentSocket {
public:
    explicit SilentSocket(const std::string& path)
        : listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address),
                  0);
        EXPECT_EQ(::listen(listener_.get(), 8), 0);
    }

private:
    FileDescriptor listener_;
};

}  // namespace tavo::processes
