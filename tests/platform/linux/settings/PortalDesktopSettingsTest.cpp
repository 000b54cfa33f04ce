#include <csignal>
#include <optional>

#include <gtest/gtest.h>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/settings/PortalDesktopSettings.h"
#include "tests/contracts/DesktopSettingsContract.h"
#include "tests/fakes/ManualMainQueue.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"
#include "tests/platform/linux/settings/PortalStandIn.h"

namespace tavo {
namespace {

using processes::Folder;
using processes::kPatience;
using processes::PrivateBus;
using processes::Report;
using processes::SilentSocket;
using processes::Variable;
using std::chrono::milliseconds;

constexpr char kAppearance[] = "org.freedesktop.appearance";
constexpr char kInterface[] = "org.gnome.desktop.interface";

// A session bus, a portal that takes its bus name when the test wants it, and the settings under
// test.
class PortalWorld {
public:
    void choose(const DesktopPreferences& preferences) {
        portal.set(kAppearance, "color-scheme",
                   preferences.colorScheme == ColorScheme::Dark    ? "uint32 1"
                   : preferences.colorScheme == ColorScheme::Light ? "uint32 2"
                                                                   : "uint32 0");
        portal.set(kInterface, "enable-animations", preferences.reducedMotion ? "false" : "true");
        portal.set(kInterface, "icon-theme", "'" + preferences.iconTheme + "'");
        portal.set(kInterface, "font-name", "'" + preferences.fontFamilies + " 11'");
        portal.set(kAppearance, "accent-color",
                   preferences.accent == 0xff0000U ? "(1.0, 0.0, 0.0)" : "(-1.0, -1.0, -1.0)");
    }

    DesktopSettings& settings() {
        if (!settings_) {
            portal.enter();
            make();
        }
        return *settings_;
    }

    // Makes the settings; the test decides whether the portal is on the bus.
    DesktopSettings& make() {
        sessionBus_ = std::make_unique<SessionBus>(sessionBusAddress());
        settings_ = makePortalDesktopSettings(*sessionBus_, queue);
        return *settings_;
    }

    void drop() { settings_.reset(); }

    bool eventually(const std::function<bool()>& condition) {
        return processes::becomesTrue([&] {
            queue.run();
            return condition();
        });
    }

    // Waits until the portal has answered every question; returns the preferences.
    DesktopPreferences answered() {
        settings().awaitFirstAnswer(kPatience);
        return settings().preferences();
    }

    Folder folder;
    PrivateBus bus{folder};
    PortalStandIn portal;
    ManualMainQueue queue;

private:
    std::unique_ptr<SessionBus> sessionBus_;
    std::unique_ptr<DesktopSettings> settings_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Portal, DesktopSettingsContract, PortalWorld);

class PortalDesktopSettingsTest : public testing::Test {
protected:
    PortalWorld world_;
};

TEST_F(PortalDesktopSettingsTest, a_portal_without_settings_leaves_the_defaults) {
    world_.choose({ColorScheme::Dark, true, "Papirus"});
    world_.portal.haveNoSettings();
    EXPECT_EQ(world_.answered(), DesktopPreferences());
}

TEST_F(PortalDesktopSettingsTest, motion_is_reduced_by_either_key) {
    struct Row {
        const char* name;
        const char* reducedMotion;
        const char* animations;
        bool reduced;
    };
    const Row kRows[] = {
        {"neither", "", "", false},
        {"both say no", "uint32 0", "true", false},
        {"the newer key", "uint32 1", "true", true},
        {"the older key", "uint32 0", "false", true},
        {"the older key alone", "", "false", true},
        {"a number of the future", "uint32 7", "true", false},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        PortalWorld world;
        world.portal.set(kAppearance, "reduced-motion", row.reducedMotion, false);
        world.portal.set(kInterface, "enable-animations", row.animations, false);
        EXPECT_EQ(world.answered().reducedMotion, row.reduced);
    }
}

TEST_F(PortalDesktopSettingsTest, contrast_is_raised_by_either_key_and_followed) {
    constexpr char kAccessibility[] = "org.gnome.desktop.a11y.interface";
    struct Row {
        const char* name;
        const char* contrast;
        const char* highContrast;
        bool more;
    };
    const Row kRows[] = {
        {"neither", "", "", false},
        {"both say no", "uint32 0", "false", false},
        {"the key of all desktops", "uint32 1", "", true},
        {"GNOME's key alone", "", "true", true},
        {"GNOME's key, the other not set", "uint32 0", "true", true},
        {"a number of the future", "uint32 7", "", false},
        {"a text", "'1'", "'true'", false},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        PortalWorld world;
        world.portal.set(kAppearance, "contrast", row.contrast, false);
        world.portal.set(kAccessibility, "high-contrast", row.highContrast, false);
        EXPECT_EQ(world.answered().moreContrast, row.more);
        world.portal.set(kAccessibility, "high-contrast", "false");
        world.portal.set(kAppearance, "contrast", row.more ? "uint32 0" : "uint32 1");
        EXPECT_TRUE(world.eventually(
            [&] { return world.settings().preferences().moreContrast != row.more; }));
    }
}

TEST_F(PortalDesktopSettingsTest, a_dark_theme_makes_it_dark_where_neither_was_chosen) {
    world_.portal.set(kInterface, "gtk-theme", "'Adwaita-dark'");
    EXPECT_EQ(world_.answered().colorScheme, ColorScheme::Dark);
    world_.portal.set(kAppearance, "color-scheme", "uint32 2");
    EXPECT_TRUE(world_.eventually(
        [&] { return world_.settings().preferences().colorScheme == ColorScheme::Light; }));
}

TEST_F(PortalDesktopSettingsTest, times_of_mouse_and_cursor_are_taken) {
    world_.portal.set(kInterface, "cursor-blink-time", "900");
    world_.portal.set("org.gnome.settings-daemon.peripherals.mouse", "double-click", "700");
    EXPECT_EQ(world_.answered().cursorBlinkTime, milliseconds(900));
    EXPECT_EQ(world_.settings().preferences().doubleClickTime, milliseconds(700));
    world_.portal.set("org.gnome.desktop.peripherals.mouse", "double-click", "300");
    world_.portal.set(kInterface, "cursor-blink", "false");
    EXPECT_TRUE(world_.eventually(
        [&] { return world_.settings().preferences().cursorBlinkTime == milliseconds(0); }));
    EXPECT_EQ(world_.settings().preferences().doubleClickTime, milliseconds(300));
}

TEST_F(PortalDesktopSettingsTest, the_size_of_text_is_taken_and_followed) {
    world_.portal.set(kInterface, "text-scaling-factor", "1.25");
    EXPECT_EQ(world_.answered().textScale, 1.25);
    world_.portal.set(kInterface, "text-scaling-factor", "2.0");
    EXPECT_TRUE(
        world_.eventually([&] { return world_.settings().preferences().textScale == 2.0; }));
}

TEST_F(PortalDesktopSettingsTest, nonsense_counts_as_no_answer) {
    struct Row {
        const char* group;
        const char* name;
        const char* value;
    };
    const Row kRows[] = {
        {kAppearance, "color-scheme", "'dark'"},
        {kAppearance, "color-scheme", "int32 1"},
        {kAppearance, "color-scheme", "uint32 3"},
        {kAppearance, "color-scheme", "(uint32 1, uint32 1)"},
        {kAppearance, "reduced-motion", "true"},
        {kInterface, "enable-animations", "uint32 0"},
        {kInterface, "enable-animations", "'false'"},
        {kInterface, "icon-theme", "['Papirus']"},
        {kInterface, "icon-theme", "b'Papirus'"},
        {kInterface, "icon-theme", "<<uint32 1>>"},
        {kInterface, "font-name", "11"},
        {kInterface, "text-scaling-factor", "2"},
        {kInterface, "text-scaling-factor", "0.0"},
        {kInterface, "text-scaling-factor", "-1.0"},
        {kInterface, "text-scaling-factor", "50.0"},
        {kInterface, "text-scaling-factor", "nan"},
        {kInterface, "gtk-theme", "true"},
        {kInterface, "cursor-blink-time", "-1"},
        {kInterface, "cursor-blink-time", "uint32 900"},
        {kInterface, "cursor-blink", "0"},
        {kAppearance, "accent-color", "(0.5, 0.5)"},
        {kAppearance, "accent-color", "(0.5, 0.5, 1.5)"},
        {"org.gnome.desktop.peripherals.mouse", "double-click", "0"},
        {"org.gnome.desktop.peripherals.mouse", "double-click", "2000000000"},
    };
    EXPECT_EQ(world_.answered(), DesktopPreferences());
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.name) + " " + row.value);
        PortalWorld world;
        world.portal.set(row.group, row.name, row.value, false);
        EXPECT_EQ(world.answered(), DesktopPreferences());
        // Sends the same value as a signal, then others. Only the last one makes sense; when it has
        // arrived, so have those before.
        world.portal.set(row.group, row.name, row.value);
        world.portal.say("('org.gnome.desktop.interface', 'cursor-theme', <'Papirus'>)");
        world.portal.say("('org.freedesktop.appearance', 'color-scheme')");
        world.portal.say("(uint32 1,)");
        world.portal.set(kInterface, "icon-theme", "'Adwaita'");
        EXPECT_TRUE(world.eventually(
            [&] { return world.settings().preferences().iconTheme == "Adwaita"; }));
        EXPECT_EQ(world.settings().preferences(),
                  (DesktopPreferences{ColorScheme::NoPreference, false, "Adwaita"}));
    }
}

TEST_F(PortalDesktopSettingsTest, nonsense_takes_back_what_was_said_before) {
    world_.choose({ColorScheme::Dark, true, "Papirus"});
    EXPECT_EQ(world_.answered().colorScheme, ColorScheme::Dark);
    world_.portal.set(kAppearance, "color-scheme", "'light'");
    EXPECT_TRUE(world_.eventually(
        [&] { return world_.settings().preferences().colorScheme == ColorScheme::NoPreference; }));
}

TEST_F(PortalDesktopSettingsTest, a_value_wrapped_once_more_is_understood) {
    world_.portal.set(kAppearance, "color-scheme", "<uint32 1>", false);
    EXPECT_EQ(world_.answered().colorScheme, ColorScheme::Dark);
}

TEST_F(PortalDesktopSettingsTest, without_a_portal_it_is_soon_certain_that_nothing_is_known) {
    world_.make().awaitFirstAnswer(kPatience);
    EXPECT_EQ(world_.settings().preferences(), DesktopPreferences());
}

TEST_F(PortalDesktopSettingsTest, a_portal_that_does_not_run_is_started_once_and_then_asked) {
    Report report(world_.folder);
    world_.bus.addService("org.freedesktop.portal.Desktop",
                          world_.folder.script("portal", "echo started >" + report.path()));
    world_.choose({ColorScheme::Dark, false, ""});
    DesktopSettings& settings = world_.make();
    EXPECT_EQ(report.line(), "started");
    world_.portal.enter();
    EXPECT_TRUE(
        world_.eventually([&] { return settings.preferences().colorScheme == ColorScheme::Dark; }));
}

TEST_F(PortalDesktopSettingsTest, a_portal_that_comes_later_or_anew_is_asked_then) {
    DesktopSettings& settings = world_.make();
    settings.awaitFirstAnswer(kPatience);
    world_.choose({ColorScheme::Light, false, "Adwaita"});
    world_.portal.enter();
    EXPECT_TRUE(world_.eventually(
        [&] { return settings.preferences().colorScheme == ColorScheme::Light; }));
    world_.portal.leave();
    world_.portal.set(kAppearance, "color-scheme", "uint32 1", false);
    world_.portal.enter();
    EXPECT_TRUE(
        world_.eventually([&] { return settings.preferences().colorScheme == ColorScheme::Dark; }));
    EXPECT_EQ(settings.preferences().iconTheme, "Adwaita");
}

TEST_F(PortalDesktopSettingsTest, a_portal_that_is_slow_delays_nothing) {
    world_.choose({ColorScheme::Dark, false, ""});
    world_.portal.enter();
    world_.portal.holdAnswers();
    DesktopSettings& settings = world_.make();
    settings.awaitFirstAnswer(milliseconds(1));
    EXPECT_EQ(settings.preferences(), DesktopPreferences());
    EXPECT_TRUE(processes::becomesTrue([&] { return world_.portal.questions() > 0; }));
    world_.portal.releaseAnswers();
    EXPECT_TRUE(
        world_.eventually([&] { return settings.preferences().colorScheme == ColorScheme::Dark; }));
}

TEST_F(PortalDesktopSettingsTest, ending_does_not_wait_for_answers_and_announces_nothing) {
    world_.choose({ColorScheme::Dark, false, ""});
    world_.portal.enter();
    world_.portal.holdAnswers();
    DesktopSettings& settings = world_.make();
    const Subscription subscription =
        settings.changed.subscribe([] { ADD_FAILURE() << "announced after its end"; });
    EXPECT_TRUE(processes::becomesTrue([&] { return world_.portal.questions() > 0; }));
    world_.drop();
    world_.portal.releaseAnswers();
    world_.queue.run();
}

TEST_F(PortalDesktopSettingsTest, what_waits_in_the_main_queue_finds_it_gone) {
    world_.choose({ColorScheme::Dark, false, ""});
    const Subscription subscription =
        world_.settings().changed.subscribe([] { ADD_FAILURE() << "announced after its end"; });
    world_.settings().awaitFirstAnswer(kPatience);
    EXPECT_GT(world_.queue.waiting(), 0U);
    world_.drop();
    world_.queue.run();
}

TEST_F(PortalDesktopSettingsTest, losing_the_bus_leaves_what_was_known) {
    world_.choose({ColorScheme::Dark, false, "Papirus"});
    EXPECT_EQ(world_.answered().colorScheme, ColorScheme::Dark);
    world_.bus.end();
    EXPECT_EQ(world_.settings().preferences(),
              (DesktopPreferences{ColorScheme::Dark, false, "Papirus"}));
}

TEST_F(PortalDesktopSettingsTest, a_bus_that_is_stopped_delays_nothing) {
    const pid_t daemon = world_.bus.process();
    ::kill(daemon, SIGSTOP);
    world_.make().awaitFirstAnswer(milliseconds(1));
    EXPECT_EQ(world_.settings().preferences(), DesktopPreferences());
    world_.drop();
    ::kill(daemon, SIGCONT);
}

TEST_F(PortalDesktopSettingsTest, a_bus_that_answers_late_is_asked_then) {
    world_.choose({ColorScheme::Dark, false, ""});
    world_.portal.enter();
    ::kill(world_.bus.process(), SIGSTOP);
    DesktopSettings& settings = world_.make();
    settings.awaitFirstAnswer(milliseconds(1));
    EXPECT_EQ(settings.preferences(), DesktopPreferences());
    ::kill(world_.bus.process(), SIGCONT);
    EXPECT_TRUE(
        world_.eventually([&] { return settings.preferences().colorScheme == ColorScheme::Dark; }));
}

TEST(PortalDesktopSettings, without_a_bus_nothing_is_known_at_once) {
    ManualMainQueue queue;
    for (const char* const address : {"unix:path=/nonexistent", "nonsense", "autolaunch:", ""}) {
        SCOPED_TRACE(address);
        const Variable bus("DBUS_SESSION_BUS_ADDRESS", address);
        const Variable runtime("XDG_RUNTIME_DIR", "/nonexistent");
        SessionBus sessionBus(sessionBusAddress());
        const auto settings = makePortalDesktopSettings(sessionBus, queue);
        settings->awaitFirstAnswer(kPatience);
        EXPECT_EQ(settings->preferences(), DesktopPreferences());
    }
    EXPECT_TRUE(processes::children().empty()) << "a bus was started";
}

TEST(PortalDesktopSettings, a_bus_that_never_answers_delays_nothing) {
    const Folder folder;
    const SilentSocket silent(folder.path("bus"));
    const Variable bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder.path("bus"));
    ManualMainQueue queue;
    SessionBus sessionBus(sessionBusAddress());
    const auto settings = makePortalDesktopSettings(sessionBus, queue);
    settings->awaitFirstAnswer(milliseconds(1));
    EXPECT_EQ(settings->preferences(), DesktopPreferences());
}

TEST(PortalDesktopSettings, the_bus_in_the_runtime_folder_is_found_without_a_variable) {
    PortalWorld world;
    world.choose({ColorScheme::Dark, false, ""});
    world.portal.enter();
    // An empty address makes D-Bus look for the socket "bus" in XDG_RUNTIME_DIR, where the private
    // bus has its own.
    const Variable address("DBUS_SESSION_BUS_ADDRESS", "");
    const Variable runtime("XDG_RUNTIME_DIR", world.folder.path());
    world.make().awaitFirstAnswer(kPatience);
    EXPECT_EQ(world.settings().preferences().colorScheme, ColorScheme::Dark);
}

}  // namespace
}  // namespace tavo
