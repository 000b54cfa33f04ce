#include <gtest/gtest.h>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/tray/StatusNotifierTray.h"
#include "tests/platform/linux/fixtures/AwaitedMainQueue.h"
#include "tests/platform/linux/fixtures/PanelStandIn.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"

namespace tavo {
namespace {

class StatusNotifierTrayTest : public testing::Test {
protected:
    bool awaitHost(bool host) {
        return queue_.runUntil([&] { return tray_.host() == host; });
    }

    std::string address() const { return "unix:path=" + folder_.path("bus"); }

    processes::Folder folder_;
    processes::AwaitedMainQueue queue_;
    SessionBus sessionBus_{address()};
    StatusNotifierTray tray_{sessionBus_, queue_};
};

TEST_F(StatusNotifierTrayTest, without_a_bus_there_is_no_panel) {
    EXPECT_TRUE(awaitHost(false));
}

TEST_F(StatusNotifierTrayTest, a_bus_without_a_watcher_has_no_panel) {
    const processes::PrivateBus bus(folder_);
    EXPECT_TRUE(awaitHost(false));
}

TEST_F(StatusNotifierTrayTest, the_item_is_there_again_on_each_bus_that_comes) {
    std::optional<StatusItemClick> click;
    const Subscription clicks =
        tray_.clicked.subscribe([&](const StatusItemClick& clicked) { click = clicked; });
    tray_.offer({.title = "Something", .images = {}, .menu = {}});
    for (int round = 0; round < 2; ++round) {
        processes::PrivateBus bus(folder_);
        processes::PanelStandIn panel(address());
        EXPECT_TRUE(awaitHost(true));
        const std::string item = panel.awaitItem();
        EXPECT_TRUE(panel.client().call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem",
                                        "Activate", g_variant_new("(ii)", 0, 0)));
        EXPECT_TRUE(queue_.runUntil([&] { return click.has_value(); }));
        click.reset();
        bus.end();
        EXPECT_TRUE(awaitHost(false));
        std::filesystem::remove(folder_.path("bus"));
    }
}

TEST_F(StatusNotifierTrayTest, an_item_that_was_withdrawn_comes_to_no_panel) {
    const processes::PrivateBus bus(folder_);
    tray_.offer({.title = "Withdrawn", .images = {}, .menu = {}});
    tray_.withdraw();
    processes::PanelStandIn panel(address());
    tray_.offer({.title = "Shown", .images = {}, .menu = {}});
    EXPECT_EQ(panel.client().property(panel.awaitItem(), "/StatusNotifierItem",
                                      "org.kde.StatusNotifierItem", "Title"),
              "(<'Shown'>,)");
}

TEST(StatusNotifierTray, of_a_silent_bus_it_is_not_known_whether_there_is_a_panel) {
    const processes::Folder folder;
    const processes::SilentSocket silent(folder.path("bus"));
    processes::AwaitedMainQueue queue;
    SessionBus bus("unix:path=" + folder.path("bus"));
    const StatusNotifierTray tray(bus, queue);
    // Waits until the bus thread has done all that it can do without an answer.
    bus.thread().postAndWait([] {});
    EXPECT_EQ(tray.host(), std::nullopt);
}

}  // namespace
}  // namespace tavo
