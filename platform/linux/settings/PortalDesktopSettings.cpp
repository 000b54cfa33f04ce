#include "platform/linux/settings/PortalDesktopSettings.h"

#include <array>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/MainThreadPoster.h"
#include "platform/linux/dbus/BusCalls.h"
#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/settings/SettingValues.h"

namespace tavo {
namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";

// Long enough for the first window to be painted before.
constexpr std::chrono::milliseconds kBeforeStartingThePortal{500};

constexpr char kAppearance[] = "org.freedesktop.appearance";
constexpr char kInterface[] = "org.gnome.desktop.interface";
constexpr char kAccessibility[] = "org.gnome.desktop.a11y.interface";
constexpr char kMouse[] = "org.gnome.desktop.peripherals.mouse";
constexpr char kOlderMouse[] = "org.gnome.settings-daemon.peripherals.mouse";
constexpr std::array<const char*, 5> kGroups = {kAppearance, kInterface, kAccessibility, kMouse,
                                                kOlderMouse};

// The values that the portal has told, by group and name, and what follows from them.
class Answers {
public:
    void take(std::string_view group, std::string_view name, Variant value) {
        values_.insert_or_assign(std::pair(std::string(group), std::string(name)),
                                 std::move(value));
    }

    // A value of the wrong type counts as none.
    [[nodiscard]] DesktopPreferences preferences() const {
        constexpr std::uint32_t kReduced = 1;
        constexpr std::uint32_t kHigher = 1;
        DesktopPreferences told;
        told.colorScheme = colorScheme();
        told.reducedMotion = number(kAppearance, "reduced-motion") == kReduced ||
                             !truth(kInterface, "enable-animations", true);
        told.moreContrast = number(kAppearance, "contrast") == kHigher ||
                            truth(kAccessibility, "high-contrast", false);
        told.iconTheme = text(kInterface, "icon-theme");
        if (GVariant* const parts = value(kAppearance, "accent-color", "(ddd)")) {
            std::array<double, 3> part = {};
            g_variant_get(parts, "(ddd)", &part[0], &part[1], &part[2]);
            told.accent = colorOfParts(part[0], part[1], part[2]);
        }
        told.fontFamilies = familiesOfPangoFont(text(kInterface, "font-name"));
        if (GVariant* const factor = value(kInterface, "text-scaling-factor", "d")) {
            told.textScale = textScaleOf(g_variant_get_double(factor));
        }
        for (const char* const group : {kMouse, kOlderMouse}) {
            const auto time = integer(group, "double-click");
            if (time && !told.doubleClickTime) {
                told.doubleClickTime = doubleClickTimeOf(*time);
            }
        }
        const bool blinks = truth(kInterface, "cursor-blink", true);
        const auto time = integer(kInterface, "cursor-blink-time");
        if (!blinks || time) {
            told.cursorBlinkTime = cursorBlinkTimeOf(blinks, time.value_or(0));
        }
        return told;
    }

private:
    [[nodiscard]] ColorScheme colorScheme() const {
        constexpr std::uint32_t kDark = 1;
        constexpr std::uint32_t kLight = 2;
        const std::uint32_t scheme = number(kAppearance, "color-scheme");
        return scheme == kDark || (scheme != kLight && isDarkTheme(text(kInterface, "gtk-theme")))
                   ? ColorScheme::Dark
               : scheme == kLight ? ColorScheme::Light
                                  : ColorScheme::NoPreference;
    }

    // Null where the portal has told none, or one of another type.
    [[nodiscard]] GVariant* value(const char* group, const char* name, const char* type) const {
        const auto found = values_.find(std::pair(std::string(group), std::string(name)));
        return found != values_.end() &&
                       g_variant_is_of_type(found->second.get(), G_VARIANT_TYPE(type)) != FALSE
                   ? found->second.get()
                   : nullptr;
    }
    [[nodiscard]] std::uint32_t number(const char* group, const char* name) const {
        GVariant* const told = value(group, name, "u");
        return told != nullptr ? g_variant_get_uint32(told) : 0;
    }
    [[nodiscard]] std::optional<std::int32_t> integer(const char* group, const char* name) const {
        GVariant* const told = value(group, name, "i");
        return told != nullptr ? std::optional(g_variant_get_int32(told)) : std::nullopt;
    }
    [[nodiscard]] bool truth(const char* group, const char* name, bool otherwise) const {
        GVariant* const told = value(group, name, "b");
        return told == nullptr ? otherwise : g_variant_get_boolean(told) != FALSE;
    }
    [[nodiscard]] std::string text(const char* group, const char* name) const {
        GVariant* const told = value(group, name, "s");
        return told != nullptr ? g_variant_get_string(told, nullptr) : "";
    }

    std::map<std::pair<std::string, std::string>, Variant> values_;
};

// Some portals answer a variant in a variant.
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
            ask();
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

    void ask() {
        ++unanswered_;
        GVariantBuilder groups;
        g_variant_builder_init(&groups, G_VARIANT_TYPE("as"));
        for (const char* const group : kGroups) {
            g_variant_builder_add(&groups, "s", group);
        }
        calls_.call(bus_, {kPortal, kPortalPath, kSettings, "ReadAll"},
                    g_variant_new("(as)", &groups), "(a{sa{sv}})",
                    [this](const Variant& reply, GError* error) {
                        --unanswered_;
                        answered(reply.get(), error);
                    });
    }

    void answered(GVariant* reply, GError* error) {
        const auto failed = [error](int code) {
            return g_error_matches(error, G_DBUS_ERROR, code) != FALSE;
        };
        if (reply != nullptr) {
            answers_ = {};
            takeAll(reply);
        } else if (failed(G_DBUS_ERROR_SERVICE_UNKNOWN) || failed(G_DBUS_ERROR_NAME_HAS_NO_OWNER)) {
            startSoon();
        }
        tell();
    }

    void takeAll(GVariant* reply) {
        GVariantIter* groups = nullptr;
        g_variant_get(reply, "(a{sa{sv}})", &groups);
        const char* group = nullptr;
        GVariantIter* settings = nullptr;
        while (g_variant_iter_loop(groups, "{&sa{sv}}", &group, &settings) != FALSE) {
            const char* name = nullptr;
            GVariant* value = nullptr;
            while (g_variant_iter_next(settings, "{&sv}", &name, &value) != FALSE) {
                answers_.take(group, name, unwrapped(Variant(value).get()));
            }
        }
        g_variant_iter_free(groups);
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
        self.answers_.take(group, name, unwrapped(value));
        self.tell();
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
            self.ask();
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
