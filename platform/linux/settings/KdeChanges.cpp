#include "platform/linux/settings/KdeChanges.h"

#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/MainThreadPoster.h"
#include "platform/linux/dbus/SessionBus.h"

namespace tavo {
namespace {

class BusKdeChanges final : public KdeChanges {
public:
    BusKdeChanges(SessionBus& bus, MainQueue& mainQueue) : bus_(bus), poster_(mainQueue) {
        bus_.thread().post([this] {
            following_ = bus_.follow([this](GDBusConnection* connection) { follow(connection); });
        });
    }
    BusKdeChanges(const BusKdeChanges&) = delete;
    BusKdeChanges& operator=(const BusKdeChanges&) = delete;
    ~BusKdeChanges() override {
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
            listen("/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange");
        }
    }

    void listen(const char* path, const char* interface, const char* signal) {
        subscriptions_.push_back(g_dbus_connection_signal_subscribe(
            connection_, nullptr, interface, signal, path, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
            &BusKdeChanges::heard, this, nullptr));
    }

    void unsubscribe() {
        for (const guint subscription : std::exchange(subscriptions_, {})) {
            g_dbus_connection_signal_unsubscribe(connection_, subscription);
        }
    }

    static void heard(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                      const gchar* /*interface*/, const gchar* /*signal*/, GVariant* /*parameters*/,
                      gpointer data) {
        auto& self = *static_cast<BusKdeChanges*>(data);
        self.poster_.post([&self] { self.changed.emit(); });
    }

    SessionBus& bus_;
    MainThreadPoster poster_;
    GDBusConnection* connection_ = nullptr;
    std::vector<guint> subscriptions_;
    Subscription following_;
};

}  // namespace

std::unique_ptr<KdeChanges> watchKde(SessionBus& bus, MainQueue& mainQueue) {
    return std::make_unique<BusKdeChanges>(bus, mainQueue);
}

}  // namespace tavo
