// The first start's side of the instance socket: it hears the starts that come after it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "platform/StartRequest.h"
#include "platform/linux/dbus/GLibThread.h"
#include "platform/linux/instance/InstanceSocket.h"

namespace tavo {

// Use on the constructor's `thread` only.
class InstanceListener {
public:
    // Listens from now on. Calls `asked` with the request of each start.
    InstanceListener(GLibThread& thread, std::unique_ptr<InstanceSocket> socket,
                     std::function<void(const StartRequest&)> asked);
    InstanceListener(const InstanceListener&) = delete;
    InstanceListener& operator=(const InstanceListener&) = delete;
    ~InstanceListener() = default;

    // Tells the starts so far, and each later one at once, that they may end. Until then they are
    // told to wait, because this process might never show its window. A start that still waits when
    // this object is destroyed tries to become the first.
    void confirmStarts();

    // Handles every request that has arrived already. A start does not wait long for an answer, and
    // takes its request for served even without one.
    void hearAll();

private:
    struct Start {
        FileDescriptor connection;
        ScopedSource readable;
        ScopedSource late;
    };

    void listen();
    bool accept();
    void hear(int connection);

    GLibThread& thread_;
    const std::unique_ptr<InstanceSocket> socket_;
    const std::function<void(const StartRequest&)> asked_;
    ScopedSource listener_;
    ScopedSource pause_;           // instead of listener_ while no descriptor is left
    std::map<int, Start> starts_;  // connected; their requests are still to come
    bool confirms_ = false;
    std::vector<FileDescriptor> waiting_;
};

}  // namespace tavo
