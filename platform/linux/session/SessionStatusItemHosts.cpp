#include "platform/linux/session/SessionStatusItemHosts.h"

#include <QGuiApplication>
#include <QTimer>
#include <chrono>
#include <utility>

#include "platform/linux/session/SingleInstance.h"
#include "platform/linux/x11/XcbPanels.h"

namespace tavo {
namespace {

using namespace std::chrono_literals;

// A bus that says nothing for so long is not worth waiting for.
constexpr auto kBusPatience = 2s;

class Hosts final : public SessionStatusItemHosts {
public:
    explicit Hosts(SingleInstance& presence) : presence_(presence) {
        if (const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
            panels_ = std::make_unique<XcbPanels>(x11->connection(), [this] { changeSoon(); });
        }
        patience_.setSingleShot(true);
        QObject::connect(&patience_, &QTimer::timeout, &patience_, [this] {
            waited_ = true;
            changed.emit();
        });
        patience_.start(kBusPatience);
    }

    StatusItemHost host() const override {
        const auto notifier = presence_.notifierHost();
        if (notifier.value_or(false)) {
            return StatusItemHost::Notifier;
        }
        const bool known = notifier.has_value() || waited_;
        return known && panels_ && panels_->trayThere() ? StatusItemHost::Embedding
                                                        : StatusItemHost::None;
    }

    std::optional<PanelPlace> panel() override {
        return panels_ ? panels_->panelOf(presence_.notifierProcess()) : std::nullopt;
    }

    void offer(StatusItemContent item) override { presence_.offerItem(std::move(item)); }

    void withdraw() override { presence_.withdrawItem(); }

    void repaint(std::vector<StatusItemImage> images) override {
        presence_.repaintItem(std::move(images));
    }

    void presenceChanged() override {
        if (presence_.notifierHost().has_value()) {
            patience_.stop();
        }
        changed.emit();
    }

private:
    void changeSoon() {
        QMetaObject::invokeMethod(
            &patience_, [this] { changed.emit(); }, Qt::QueuedConnection);
    }

    SingleInstance& presence_;
    QTimer patience_;
    bool waited_ = false;
    std::unique_ptr<XcbPanels> panels_;  // of an X server
};

}  // namespace

std::unique_ptr<SessionStatusItemHosts> makeSessionStatusItemHosts(SingleInstance& presence) {
    return std::make_unique<Hosts>(presence);
}

}  // namespace tavo
