#include "platform/linux/session/SessionStatusItemHosts.h"

#include <QGuiApplication>
#include <QTimer>
#include <chrono>
#include <utility>

#include "platform/linux/tray/StatusNotifierTray.h"
#include "platform/linux/x11/XcbSystemTray.h"

namespace tavo {
namespace {

// How long a bus that does not answer keeps the status item out of the X11 system tray.
constexpr std::chrono::seconds kBusPatience{2};

class SessionStatusItemHosts final : public StatusItemHosts {
public:
    SessionStatusItemHosts(SessionBus& bus, MainQueue& mainQueue) : notifiers_(bus, mainQueue) {
        if (const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
            tray_ = std::make_unique<XcbSystemTray>(x11->connection(), [this] { changeSoon(); });
        }
        patience_.setSingleShot(true);
        QObject::connect(&patience_, &QTimer::timeout, &patience_, [this] {
            waited_ = true;
            changed.emit();
        });
        patience_.start(kBusPatience);
        notifierChanges_ = notifiers_.changed.subscribe([this] {
            patience_.stop();
            changed.emit();
        });
        clicks_ = notifiers_.clicked.subscribe(
            [this](const StatusItemClick& click) { clicked.emit(click); });
    }

    StatusItemHost host() const override {
        const auto notifier = notifiers_.host();
        if (notifier.value_or(false)) {
            return StatusItemHost::Notifier;
        }
        const bool known = notifier.has_value() || waited_;
        return known && tray_ && tray_->exists() ? StatusItemHost::Embedding : StatusItemHost::None;
    }

    void offer(StatusItemContent item) override { notifiers_.offer(std::move(item)); }

    void withdraw() override { notifiers_.withdraw(); }

private:
    void changeSoon() {
        QMetaObject::invokeMethod(
            &patience_, [this] { changed.emit(); }, Qt::QueuedConnection);
    }

    QTimer patience_;
    bool waited_ = false;
    std::unique_ptr<XcbSystemTray> tray_;  // null elsewhere than on X11
    StatusNotifierTray notifiers_;
    Subscription notifierChanges_;
    Subscription clicks_;
};

}  // namespace

std::unique_ptr<StatusItemHosts> makeSessionStatusItemHosts(SessionBus& bus, MainQueue& mainQueue) {
    return std::make_unique<SessionStatusItemHosts>(bus, mainQueue);
}

}  // namespace tavo
