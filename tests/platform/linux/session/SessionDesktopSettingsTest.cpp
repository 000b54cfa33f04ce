#include <csignal>

#include <gtest/gtest.h>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/session/SessionDesktopSettings.h"
#include "tests/contracts/DesktopSettingsContract.h"
#include "tests/fakes/ManualMainQueue.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/XServer.h"
#include "tests/platform/linux/fixtures/XSettingsBytes.h"
#include "tests/platform/linux/settings/PortalStandIn.h"

namespace tavo {
namespace {

using processes::kPatience;
using std::chrono::milliseconds;

constexpr char kAppearance[] = "org.freedesktop.appearance";
constexpr char kInterface[] = "org.gnome.desktop.interface";

// A bus with a portal, an X server, and a folder of configuration files.
class SessionWorld {
public:
    SessionDesktopSettings& settings(const std::string& desktop = "") {
        if (!settings_) {
            portal.enter();
            settings_ = makeSessionDesktopSettings({{folder.path()}, {}, {desktop}},
                                                   server.display(), sessionBus_, queue);
        }
        return *settings_;
    }

    DesktopPreferences answered(const std::string& desktop = "") {
        settings(desktop).awaitFirstAnswer(kPatience);
        return settings().preferences();
    }

    bool eventually(const std::function<bool()>& condition) {
        return processes::becomesTrue([&] {
            queue.run();
            return condition();
        });
    }

    void drop() { settings_.reset(); }

    processes::Folder folder;
    processes::PrivateBus bus{folder};
    PortalStandIn portal;
    XServer server;
    ManualMainQueue queue;

private:
    SessionBus sessionBus_{sessionBusAddress()};
    std::unique_ptr<SessionDesktopSettings> settings_;
};

// The user of a desktop of the newest kind, which tells all by the portal.
class PortalOnlyWorld : public SessionWorld {
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
};

INSTANTIATE_TYPED_TEST_SUITE_P(Session, DesktopSettingsContract, PortalOnlyWorld);

class SessionDesktopSettingsTest : public testing::Test {
protected:
    SessionWorld world_;
};

TEST_F(SessionDesktopSettingsTest, x_settings_are_taken_and_followed) {
    auto manager = world_.server.publishSettings(XSettingsBytes(false)
                                                     .addString("Gtk/FontName", "Cantarell Bold 11")
                                                     .addString("Net/ThemeName", "Greybird-dark")
                                                     .addInteger("Net/DoubleClickTime", 700)
                                                     .addInteger("Net/DoubleClickDistance", 12)
                                                     .addInteger("Net/CursorBlink", 1)
                                                     .addInteger("Net/CursorBlinkTime", 900)
                                                     .addInteger("Gtk/EnableAnimations", 0)
                                                     .property());
    EXPECT_EQ(world_.answered(), (DesktopPreferences{ColorScheme::Dark,
                                                     true,
                                                     "",
                                                     {},
                                                     "Cantarell",
                                                     milliseconds(700),
                                                     12,
                                                     milliseconds(900)}));
    manager.reset();
    manager = world_.server.publishSettings(
        XSettingsBytes(false).addInteger("Net/CursorBlink", 0).property());
    world_.settings().readAgain();
    EXPECT_TRUE(world_.eventually([&] {
        return world_.settings().preferences() ==
               DesktopPreferences{.cursorBlinkTime = milliseconds(0)};
    }));
}

TEST_F(SessionDesktopSettingsTest, what_is_told_twice_is_taken_from_the_nearer) {
    const auto manager =
        world_.server.publishSettings(XSettingsBytes(false)
                                          .addString("Gtk/FontName", "Published 11")
                                          .addString("Net/ThemeName", "Greybird-dark")
                                          .addInteger("Net/DoubleClickTime", 700)
                                          .property());
    world_.portal.set(kInterface, "font-name", "'Portal 11'");
    world_.portal.set(kInterface, "cursor-blink-time", "900");
    world_.portal.set(kAppearance, "color-scheme", "uint32 2");
    EXPECT_EQ(world_.answered(), (DesktopPreferences{.colorScheme = ColorScheme::Light,
                                                     .fontFamilies = "Published",
                                                     .doubleClickTime = milliseconds(700),
                                                     .cursorBlinkTime = milliseconds(900)}));
    world_.folder.write("kdeglobals",
                        "[General]\nfont=Configured,10\n"
                        "[Colors:Window]\nBackgroundNormal=0,0,0\n");
    world_.drop();
    const DesktopPreferences onKde = world_.answered("KDE");
    EXPECT_EQ(onKde.fontFamilies, "Configured");
    EXPECT_EQ(onKde.colorScheme, ColorScheme::Dark);
    EXPECT_EQ(onKde.doubleClickTime, milliseconds(700));
}

TEST_F(SessionDesktopSettingsTest, x_settings_have_the_size_of_text_in_their_resolution) {
    const auto manager = world_.server.publishSettings(
        XSettingsBytes(false).addInteger("Xft/DPI", 144 * 1024).property());
    world_.portal.set(kInterface, "text-scaling-factor", "1.5");
    EXPECT_EQ(world_.answered().screenAndTextScale, 1.5);
    EXPECT_EQ(world_.settings().preferences().textScale, 1.0);
}

TEST_F(SessionDesktopSettingsTest, files_are_read_anew_when_it_is_told_so) {
    world_.folder.write("kdeglobals", "[General]\nfont=Before,10\n");
    EXPECT_EQ(world_.answered("KDE").fontFamilies, "Before");
    std::string announced;
    const Subscription subscription = world_.settings().changed.subscribe(
        [&] { announced = world_.settings().preferences().fontFamilies; });
    world_.folder.write("kdeglobals", "[General]\nfont=After,10\n");
    world_.settings().readAgain();
    EXPECT_TRUE(world_.eventually([&] { return announced == "After"; }));
}

TEST_F(SessionDesktopSettingsTest, a_server_that_has_stopped_delays_neither_answer_nor_end) {
    world_.portal.set(kAppearance, "color-scheme", "uint32 1");
    ::kill(world_.server.process(), SIGSTOP);
    SessionDesktopSettings& settings = world_.settings();
    EXPECT_TRUE(
        world_.eventually([&] { return settings.preferences().colorScheme == ColorScheme::Dark; }));
    const Subscription subscription =
        settings.changed.subscribe([] { ADD_FAILURE() << "announced after its end"; });
    const auto before = std::chrono::steady_clock::now();
    world_.drop();
    EXPECT_LT(std::chrono::steady_clock::now() - before, milliseconds(400));
    ::kill(world_.server.process(), SIGCONT);
    world_.queue.run();
}

}  // namespace
}  // namespace tavo
