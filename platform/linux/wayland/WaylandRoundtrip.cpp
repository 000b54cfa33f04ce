#include "platform/linux/wayland/WaylandRoundtrip.h"

#include <cerrno>

#include <poll.h>

namespace tavo {
namespace {

using Clock = std::chrono::steady_clock;

const wl_callback_listener kDone = {
    [](void* done, wl_callback* /*callback*/, std::uint32_t /*data*/) {
        *static_cast<bool*>(done) = true;
    }};

int dispatchPending(wl_display* display, wl_event_queue* queue) {
    return queue == nullptr ? wl_display_dispatch_pending(display)
                            : wl_display_dispatch_queue_pending(display, queue);
}

int prepareRead(wl_display* display, wl_event_queue* queue) {
    return queue == nullptr ? wl_display_prepare_read(display)
                            : wl_display_prepare_read_queue(display, queue);
}

// Waits for events until `end` and reads them; false when none came.
bool readEvents(wl_display* display, Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    pollfd input = {wl_display_get_fd(display), POLLIN, 0};
    int ready = -1;
    do {
        ready = left.count() > 0 ? ::poll(&input, 1, static_cast<int>(left.count())) : 0;
    } while (ready < 0 && errno == EINTR);
    if (ready <= 0) {
        wl_display_cancel_read(display);
        return false;
    }
    return wl_display_read_events(display) == 0;
}

}  // namespace

bool waitForCompositor(wl_display* display, wl_event_queue* queue,
                       std::chrono::milliseconds patience) {
    bool done = false;
    auto* const wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), queue);
    wl_callback* const callback = wl_display_sync(wrapper);
    wl_proxy_wrapper_destroy(wrapper);
    wl_callback_add_listener(callback, &kDone, &done);

    const Clock::time_point end = Clock::now() + patience;
    bool works = true;
    while (works && !done) {
        if (prepareRead(display, queue) == 0) {
            if (wl_display_flush(display) < 0 && errno != EAGAIN) {
                wl_display_cancel_read(display);
                works = false;
            } else {
                works = readEvents(display, end);
            }
        }
        works = dispatchPending(display, queue) >= 0 && works;
    }
    wl_callback_destroy(callback);
    return done;
}

}  // namespace tavo
