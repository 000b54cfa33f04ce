#include "platform/linux/settings/KdeIconChanges.h"

#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/MainThreadPoster.h"
#include "platform/linux/dbus/SessionBus.h"

namespace tavo {
namespace {

class BusKdeIconChanges final : public KdeIconChanges {
public:
    BusKdeIconChanges(SessionBus& bus, MainQueue& mainQueue) : bus_(bus), poster_(mainQueue) {
        bus_.thread().post([this] {
            following_ = bus_.follow([this](GDBusConnection* connection) { follow(connection); });
        });
    }
    BusKdeIconChanges(const BusKdeIconChanges&) = delete;
    BusKdeIconChanges& operator=(const BusKdeIconChanges&) = delete;
    ~BusKdeIconChanges() override {
        bus_.thread().postAndWait([this] {
            following_ = {};
            unsubscribe();
        });
    }

private:
    // The functions below run on the bus thread.

    void follow(GDBusConnection* connection) {
        unsubscribe();
        connection_ = connection;
        if (connection_ != nullptr) {
            listen("/KIconLoader", "org.kde.KIconLoader", "iconChanged");
            listen("/kdeglobals", "org.kde.kconfig.notify", "ConfigChanged");
        }
    }

    void listen(const char* path, const char* interface, const char* signal) {
        subscriptions_.push_back(g_dbus_connection_signal_subscribe(
            connection_, nullptr, interface, signal, path, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
            &BusKdeIconChanges::heard, this, nullptr));
    }

    void unsubscribe() {
        for (const guint subscription : std::exchange(subscriptions_, {})) {
            g_dbus_connection_signal_unsubscribe(connection_, subscription);
        }
    }

    static void heard(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                      const gchar* /*interface*/, const gchar* /*signal*/, GVariant* /*parameters*/,
                      gpointer data) {
        auto& self = *static_cast<BusKdeIconChanges*>(data);
        self.poster_.post([&self] { self.changed.emit(); });
    }

    SessionBus& bus_;
    MainThreadPoster poster_;
    GDBusConnection* connection_ = nullptr;
    std::vector<guint> subscriptions_;
    Subscription following_;
};

}  // namespace

std::unique_ptr<KdeIconChanges> watchKdeIcons(SessionBus& bus, MainQueue& mainQueue) {
    return std::make_unique<BusKdeIconChanges>(bus, mainQueue);
}

}  // namespace tavo
