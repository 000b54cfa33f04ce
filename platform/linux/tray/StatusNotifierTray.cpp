#include "platform/linux/tray/StatusNotifierTray.h"

#include <utility>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/tray/StatusNotifierItem.h"
#include "platform/linux/tray/StatusNotifierWatch.h"

namespace tavo {

StatusNotifierTray::StatusNotifierTray(SessionBus& bus, MainQueue& mainQueue)
    : bus_(bus), poster_(mainQueue) {
    bus_.thread().post([this] {
        watch_ = std::make_unique<StatusNotifierWatch>(
            bus_, [this](bool host) { poster_.post([this, host] { setHost(host); }); });
    });
}

StatusNotifierTray::~StatusNotifierTray() {
    bus_.thread().postAndWait([this] {
        item_.reset();
        watch_.reset();
    });
}

void StatusNotifierTray::setHost(bool host) {
    if (std::exchange(host_, host) != host) {
        changed.emit();
    }
}

void StatusNotifierTray::offer(StatusItemContent item) {
    bus_.thread().post([this, item = std::move(item)]() mutable {
        item_.reset();
        item_ = std::make_unique<StatusNotifierItem>(
            bus_, std::move(item), [this](const StatusItemClick& click) {
                poster_.post([this, click] { clicked.emit(click); });
            });
    });
}

void StatusNotifierTray::withdraw() {
    bus_.thread().post([this] { item_.reset(); });
}

}  // namespace tavo
