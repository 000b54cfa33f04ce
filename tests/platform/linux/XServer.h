// An X server without a screen, for one test.
#pragma once

#include <memory>
#include <string>

#include <sys/types.h>

namespace tavo {

class XServer {
public:
    // Starts Xvfb under a display number of its own choice and waits until it can be connected to.
    // Throws when it does not come up.
    explicit XServer(const char* screen = "64x64x24");
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    [[nodiscard]] const std::string& display() const { return display_; }
    [[nodiscard]] pid_t process() const { return process_; }

    // Publishes the bytes as the settings of screen 0, until the answer goes.
    [[nodiscard]] std::shared_ptr<void> publishSettings(const std::string& property) const;

private:
    void end();

    pid_t process_ = -1;
    std::string display_;
};

}  // namespace tavo
