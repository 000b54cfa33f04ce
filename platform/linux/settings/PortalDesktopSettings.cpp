#include "platform/linux/settings/PortalDesktopSettings.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include <gio/gio.h>

#include "platform/MainQueue.h"
#include "platform/linux/dbus/BusDaemonCalls.h"
#include "platform/linux/dbus/GLibThread.h"
#include "platform/linux/dbus/Variant.h"

namespace tavo {
namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";

// By then the first window has long been painted.
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

struct UnrefObject {
    void operator()(gpointer object) const { g_object_unref(object); }
};

// What the portal has said of each key, and what that comes to.
class Answers {
public:
    // Values of a type that the key does not have count as none.
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

// Read answers a variant in a variant.
Variant unwrapped(GVariant* value) {
    Variant inner(g_variant_ref(value));
    while (g_variant_is_of_type(inner.get(), G_VARIANT_TYPE_VARIANT) != FALSE) {
        inner.reset(g_variant_get_variant(inner.get()));
    }
    return inner;
}

// The conversation with the portal. All of it happens on the thread it is given.
class Portal {
public:
    // `learn` hears what is known after each answer, and whether all questions asked so far have
    // been answered.
    using Learn = std::function<void(const DesktopPreferences&, bool all)>;

    Portal(GLibThread& thread, Learn learn) : thread_(thread), learn_(std::move(learn)) {}
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;
    ~Portal() = default;

    void connect(const std::string& address) {
        if (address.empty()) {
            tell();
            return;
        }
        thread_.beginCall();
        g_dbus_connection_new_for_address(
            address.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, thread_.cancellable(), &Portal::connected, this);
    }

    // Nothing is told any more.
    void leave() {
        ended_ = true;
        start_.end();
        for (const guint subscription : std::exchange(subscriptions_, {})) {
            g_dbus_connection_signal_unsubscribe(bus_.get(), subscription);
        }
    }

    // Once no call is under way.
    void disconnect() { bus_.reset(); }

private:
    struct Question {
        Portal& portal;
        KeyIndex key;
        bool older;  // by the method that portals of version 1 have
    };

    static void connected(GObject* /*source*/, GAsyncResult* result, gpointer data) {
        Portal& self = *static_cast<Portal*>(data);
        self.thread_.endCall();
        self.bus_.reset(g_dbus_connection_new_for_address_finish(result, nullptr));
        if (self.ended_) {
            return;
        }
        if (!self.bus_) {
            self.tell();
            return;
        }
        self.listen();
        self.askAll();
    }

    void listen() {
        // By group, so that nothing wakes the program that is of no interest to it.
        for (const char* const group : kGroups) {
            subscriptions_.push_back(g_dbus_connection_signal_subscribe(
                bus_.get(), kPortal, kSettings, "SettingChanged", kPortalPath, group,
                G_DBUS_SIGNAL_FLAGS_NONE, &Portal::settingChanged, this, nullptr));
        }
        subscriptions_.push_back(g_dbus_connection_signal_subscribe(
            bus_.get(), kBusName, kBusName, "NameOwnerChanged", kBusPath, kPortal,
            G_DBUS_SIGNAL_FLAGS_NONE, &Portal::ownerChanged, this, nullptr));
    }

    void askAll() {
        for (std::uint8_t key = 0; key < kKeyCount; ++key) {
            ask(new Question{*this, static_cast<KeyIndex>(key), false});
        }
    }

    void ask(Question* question) {
        ++unanswered_;
        thread_.beginCall();
        const Key& key = kKeys[question->key];
        g_dbus_connection_call(bus_.get(), kPortal, kPortalPath, kSettings,
                               question->older ? "Read" : "ReadOne",
                               g_variant_new("(ss)", key.group.data(), key.name.data()), nullptr,
                               G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, thread_.cancellable(),
                               &Portal::answered, question);
    }

    static void answered(GObject* source, GAsyncResult* result, gpointer data) {
        std::unique_ptr<Question> question(static_cast<Question*>(data));
        Portal& self = question->portal;
        self.thread_.endCall();
        --self.unanswered_;
        GError* error = nullptr;
        const Variant reply(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
        if (self.ended_) {
            g_clear_error(&error);
            return;
        }
        if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(v)")) != FALSE) {
            const Variant value(g_variant_get_child_value(reply.get(), 0));
            self.answers_.take(question->key, unwrapped(value.get()).get());
        } else if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD) != FALSE &&
                   !question->older) {
            question->older = true;
            self.ask(question.release());
        } else if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE ||
                   g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) != FALSE) {
            self.startSoon();
        }
        g_clear_error(&error);
        self.tell();
    }

    void startSoon() {
        if (std::exchange(startTried_, true)) {
            return;
        }
        start_ = thread_.after(kBeforeStartingThePortal, [this] {
            // Its coming is what counts, not the answer.
            callBus(bus_.get(), "StartServiceByName", g_variant_new("(su)", kPortal, 0U));
        });
    }

    static void settingChanged(GDBusConnection* /*bus*/, const gchar* /*sender*/,
                               const gchar* /*path*/, const gchar* /*interface*/,
                               const gchar* /*signal*/, GVariant* parameters, gpointer data) {
        Portal& self = *static_cast<Portal*>(data);
        if (self.ended_ || g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)")) == FALSE) {
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
        if (self.ended_ || g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sss)")) == FALSE) {
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
    Learn learn_;
    std::unique_ptr<GDBusConnection, UnrefObject> bus_;
    std::vector<guint> subscriptions_;
    Answers answers_;
    ScopedSource start_;
    int unanswered_ = 0;
    bool startTried_ = false;
    bool ended_ = false;
};

class PortalDesktopSettings final : public DesktopSettings {
public:
    PortalDesktopSettings(MainQueue& mainQueue, std::string address)
        : mainQueue_(mainQueue),
          shared_(std::make_shared<Shared>()),
          thread_(std::make_unique<GLibThread>()),
          portal_(*thread_,
                  [this](const DesktopPreferences& known, bool all) { learn(known, all); }) {
        thread_->post([this, address = std::move(address)] { portal_.connect(address); });
    }

    PortalDesktopSettings(const PortalDesktopSettings&) = delete;
    PortalDesktopSettings& operator=(const PortalDesktopSettings&) = delete;

    ~PortalDesktopSettings() override {
        thread_->postAndWait([this] { portal_.leave(); });
        thread_.reset();
        portal_.disconnect();
    }

    DesktopPreferences preferences() const override {
        const std::lock_guard lock(shared_->mutex);
        return shared_->preferences;
    }

    void awaitFirstAnswer(std::chrono::milliseconds patience) override {
        std::unique_lock lock(shared_->mutex);
        shared_->changed.wait_for(lock, patience, [this] { return shared_->answered; });
    }

private:
    // Between the main thread and the portal's; what waits in the main queue finds it gone.
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        DesktopPreferences preferences;
        bool answered = false;
        bool announced = false;  // a block is under way
    };

    void learn(const DesktopPreferences& known, bool all) {
        const std::lock_guard lock(shared_->mutex);
        if (all && !std::exchange(shared_->answered, true)) {
            shared_->changed.notify_all();
        }
        if (std::exchange(shared_->preferences, known) == known ||
            std::exchange(shared_->announced, true)) {
            return;
        }
        mainQueue_.async([this, weak = std::weak_ptr(shared_)] {
            if (const auto shared = weak.lock()) {
                {
                    const std::lock_guard announcing(shared->mutex);
                    shared->announced = false;
                }
                changed.emit();
            }
        });
    }

    MainQueue& mainQueue_;
    std::shared_ptr<Shared> shared_;
    std::unique_ptr<GLibThread> thread_;
    Portal portal_;
};

}  // namespace

std::unique_ptr<DesktopSettings> makePortalDesktopSettings(MainQueue& mainQueue,
                                                           std::string address) {
    return std::make_unique<PortalDesktopSettings>(mainQueue, std::move(address));
}

}  // namespace tavo
