#include "platform/linux/settings/PortalDesktopSettings.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/MainThreadPoster.h"
#include "platform/linux/dbus/BusCalls.h"
#include "platform/linux/dbus/SessionBus.h"

namespace tavo {
namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";

// Long enough for the first window to be painted before.
constexpr std::chrono::milliseconds kBeforeStartingThePortal{500};

struct Key {
    std::string_view group;
    std::string_view name;
};
enum KeyIndex : std::uint8_t { kColorScheme, kReducedMotion, kIconTheme, kAnimations, kKeyCount };
constexpr std::array<Key, kKeyCount> kKeys = {{
    {"org.freedesktop.appearance", "color-scheme"},
    {"org.freedesktop.appearance", "reduced-motion"},
    {"org.gnome.desktop.interface", "icon-theme"},
    {"org.gnome.desktop.interface", "enable-animations"},
}};
constexpr std::array<const char*, 2> kGroups = {"org.freedesktop.appearance",
                                                "org.gnome.desktop.interface"};

// The value of each key, and the preferences that follow from them.
class Answers {
public:
    // A value of the wrong type counts as none.
    void take(KeyIndex key, GVariant* value) {
        switch (key) {
            case kColorScheme:
                scheme_ = number(value);
                break;
            case kReducedMotion:
                reduced_ = number(value);
                break;
            case kIconTheme:
                theme_ = g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) != FALSE
                             ? g_variant_get_string(value, nullptr)
                             : "";
                break;
            case kAnimations:
                animations_ = g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) == FALSE ||
                              g_variant_get_boolean(value) != FALSE;
                break;
            case kKeyCount:
                break;
        }
    }

    [[nodiscard]] DesktopPreferences preferences() const {
        constexpr std::uint32_t kDark = 1;
        constexpr std::uint32_t kLight = 2;
        constexpr std::uint32_t kReduced = 1;
        return {.colorScheme = scheme_ == kDark    ? ColorScheme::Dark
                               : scheme_ == kLight ? ColorScheme::Light
                                                   : ColorScheme::NoPreference,
                .reducedMotion = reduced_ == kReduced || !animations_,
                .iconTheme = theme_};
    }

private:
    static std::uint32_t number(GVariant* value) {
        return g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) != FALSE
                   ? g_variant_get_uint32(value)
                   : 0;
    }

    std::uint32_t scheme_ = 0;
    std::uint32_t reduced_ = 0;
    bool animations_ = true;
    std::string theme_;
};

// The method Read answers a variant in a variant.
Variant unwrapped(GVariant* value) {
    Variant inner(g_variant_ref(value));
    while (g_variant_is_of_type(inner.get(), G_VARIANT_TYPE_VARIANT) != FALSE) {
        inner.reset(g_variant_get_variant(inner.get()));
    }
    return inner;
}

// Asks the portal, on each new connection to the bus. Use on the bus thread only.
class Portal {
public:
    // Called after each answer with what is known then, and with whether all questions asked so far
    // have been answered.
    using Learn = std::function<void(const DesktopPreferences&, bool all)>;

    Portal(SessionBus& bus, Learn learn)
        : thread_(bus.thread()),
          learn_(std::move(learn)),
          connections_(bus.follow([this](GDBusConnection* connection) { follow(connection); })) {}
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;
    ~Portal() { leave(); }

private:
    void follow(GDBusConnection* bus) {
        leave();
        bus_ = bus;
        if (bus_ != nullptr) {
            listen();
            askAll();
        } else {
            tell();
        }
    }

    void leave() {
        calls_.cancel();
        unanswered_ = 0;
        start_.end();
        for (const guint subscription : std::exchange(subscriptions_, {})) {
            g_dbus_connection_signal_unsubscribe(bus_, subscription);
        }
    }

    void listen() {
        // One subscription a group, so that changes of other settings cause no wake-ups.
        for (const char* const group : kGroups) {
            subscriptions_.push_back(g_dbus_connection_signal_subscribe(
                bus_, kPortal, kSettings, "SettingChanged", kPortalPath, group,
                G_DBUS_SIGNAL_FLAGS_NONE, &Portal::settingChanged, this, nullptr));
        }
        subscriptions_.push_back(g_dbus_connection_signal_subscribe(
            bus_, kBusName, kBusName, "NameOwnerChanged", kBusPath, kPortal,
            G_DBUS_SIGNAL_FLAGS_NONE, &Portal::ownerChanged, this, nullptr));
    }

    void askAll() {
        for (std::uint8_t key = 0; key < kKeyCount; ++key) {
            ask(static_cast<KeyIndex>(key), "ReadOne");
        }
    }

    void ask(KeyIndex key, const char* method) {
        ++unanswered_;
        calls_.call(bus_, {kPortal, kPortalPath, kSettings, method},
                    g_variant_new("(ss)", kKeys[key].group.data(), kKeys[key].name.data()), nullptr,
                    [this, key, method](const Variant& reply, GError* error) {
                        --unanswered_;
                        answered(key, method, reply.get(), error);
                    });
    }

    void answered(KeyIndex key, std::string_view method, GVariant* reply, GError* error) {
        const auto failed = [error](int code) {
            return g_error_matches(error, G_DBUS_ERROR, code) != FALSE;
        };
        if (reply != nullptr && g_variant_is_of_type(reply, G_VARIANT_TYPE("(v)")) != FALSE) {
            const Variant value(g_variant_get_child_value(reply, 0));
            answers_.take(key, unwrapped(value.get()).get());
        } else if (failed(G_DBUS_ERROR_UNKNOWN_METHOD) && method == "ReadOne") {
            ask(key, "Read");  // version 1 of the portal
        } else if (failed(G_DBUS_ERROR_SERVICE_UNKNOWN) || failed(G_DBUS_ERROR_NAME_HAS_NO_OWNER)) {
            startSoon();
        }
        tell();
    }

    // Ignores the reply: ownerChanged() asks the portal once it owns its name.
    void startSoon() {
        if (!std::exchange(startTried_, true)) {
            start_ = thread_.after(kBeforeStartingThePortal, [this] {
                callBus(bus_, "StartServiceByName", g_variant_new("(su)", kPortal, 0U));
            });
        }
    }

    static void settingChanged(GDBusConnection* /*bus*/, const gchar* /*sender*/,
                               const gchar* /*path*/, const gchar* /*interface*/,
                               const gchar* /*signal*/, GVariant* parameters, gpointer data) {
        Portal& self = *static_cast<Portal*>(data);
        if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)")) == FALSE) {
            return;
        }
        const char* group = nullptr;
        const char* name = nullptr;
        GVariant* value = nullptr;
        g_variant_get(parameters, "(&s&sv)", &group, &name, &value);
        const Variant kept(value);
        const auto key = std::ranges::find_if(
            kKeys, [&](const Key& known) { return known.group == group && known.name == name; });
        if (key != kKeys.end()) {
            self.answers_.take(static_cast<KeyIndex>(key - kKeys.begin()), unwrapped(value).get());
            self.tell();
        }
    }

    static void ownerChanged(GDBusConnection* /*bus*/, const gchar* /*sender*/,
                             const gchar* /*path*/, const gchar* /*interface*/,
                             const gchar* /*signal*/, GVariant* parameters, gpointer data) {
        Portal& self = *static_cast<Portal*>(data);
        if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sss)")) == FALSE) {
            return;
        }
        const char* owner = nullptr;
        g_variant_get(parameters, "(&s&s&s)", nullptr, nullptr, &owner);
        if (*owner != '\0') {
            self.askAll();
        }
    }

    void tell() { learn_(answers_.preferences(), unanswered_ == 0); }

    GLibThread& thread_;
    const Learn learn_;
    GDBusConnection* bus_ = nullptr;
    std::vector<guint> subscriptions_;
    BusCalls calls_;
    Answers answers_;
    ScopedSource start_;
    int unanswered_ = 0;
    bool startTried_ = false;
    Subscription connections_;
};

class PortalDesktopSettings final : public DesktopSettings {
public:
    PortalDesktopSettings(SessionBus& bus, MainQueue& mainQueue) : bus_(bus), poster_(mainQueue) {
        bus_.thread().post([this] {
            portal_ = std::make_unique<Portal>(
                bus_, [this](const DesktopPreferences& known, bool all) { learn(known, all); });
        });
    }

    PortalDesktopSettings(const PortalDesktopSettings&) = delete;
    PortalDesktopSettings& operator=(const PortalDesktopSettings&) = delete;

    ~PortalDesktopSettings() override {
        bus_.thread().postAndWait([this] { portal_.reset(); });
    }

    DesktopPreferences preferences() const override {
        const std::lock_guard lock(mutex_);
        return preferences_;
    }

    void awaitFirstAnswer(std::chrono::milliseconds patience) override {
        std::unique_lock lock(mutex_);
        answeredChanged_.wait_for(lock, patience, [this] { return answered_; });
    }

private:
    void learn(const DesktopPreferences& known, bool all) {
        const std::lock_guard lock(mutex_);
        if (all && !std::exchange(answered_, true)) {
            answeredChanged_.notify_all();
        }
        // Answers in quick succession are announced once.
        if (std::exchange(preferences_, known) != known && !std::exchange(announcing_, true)) {
            poster_.post([this] { announce(); });
        }
    }

    void announce() {
        {
            const std::lock_guard lock(mutex_);
            announcing_ = false;
        }
        changed.emit();
    }

    SessionBus& bus_;
    MainThreadPoster poster_;
    mutable std::mutex mutex_;
    std::condition_variable answeredChanged_;
    DesktopPreferences preferences_;  // under the mutex
    bool answered_ = false;           // under the mutex
    bool announcing_ = false;         // under the mutex
    std::unique_ptr<Portal> portal_;  // used on the bus thread only
};

}  // namespace

std::unique_ptr<DesktopSettings> makePortalDesktopSettings(SessionBus& bus, MainQueue& mainQueue) {
    return std::make_unique<PortalDesktopSettings>(bus, mainQueue);
}

}  // namespace tavo
