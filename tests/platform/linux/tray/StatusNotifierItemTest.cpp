#include <deque>
#include <optional>

#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/tray/StatusNotifierItem.h"
#include "tests/platform/linux/fixtures/PanelStandIn.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"

namespace tavo {
namespace {

using processes::Client;
using processes::kPatience;
using processes::PanelStandIn;

constexpr char kPath[] = "/StatusNotifierItem";
constexpr char kItem[] = "org.kde.StatusNotifierItem";
constexpr char kMenu[] = "com.canonical.dbusmenu";

StatusItemContent someItem() {
    return {.title = "Something",
            .images = {{.side = 1, .pixels = {0x80FF4020}},
                       {.side = 2, .pixels = {0x01020304, 0, 0, 0xFFFFFFFF}}},
            .menu = {{.text = "Open_it", .controlKey = ""},
                     {.text = "", .controlKey = ""},
                     {.text = "Quit", .controlKey = "q"}}};
}

class StatusNotifierItemTest : public testing::Test {
protected:
    StatusNotifierItemTest() : bus_(folder_), sessionBus_(address()) {
        onThread([this] {
            item_ = std::make_unique<StatusNotifierItem>(
                sessionBus_, someItem(),
                [this](const StatusItemClick& click) {
                    const std::lock_guard lock(mutex_);
                    clicks_.push_back(click);
                    changed_.notify_all();
                },
                [this] { return now_; });
        });
    }

    ~StatusNotifierItemTest() override { dropItem(); }

    void pass(std::chrono::milliseconds time) {
        onThread([this, time] { now_ += time; });
    }

    void dropItem() {
        onThread([this] { item_.reset(); });
    }

    std::string address() const { return "unix:path=" + folder_.path("bus"); }

    void onThread(const std::function<void()>& job) { sessionBus_.thread().postAndWait(job); }

    std::optional<StatusItemClick> awaitClick() {
        std::unique_lock lock(mutex_);
        if (!changed_.wait_for(lock, kPatience, [this] { return !clicks_.empty(); })) {
            return std::nullopt;
        }
        const StatusItemClick click = clicks_.front();
        clicks_.pop_front();
        return click;
    }

    std::size_t clicks() {
        const std::lock_guard lock(mutex_);
        return clicks_.size();
    }

    processes::Folder folder_;
    processes::PrivateBus bus_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<StatusItemClick> clicks_;
    StatusNotifierItem::Clock::time_point now_;  // used on the bus thread, as the item is
    std::unique_ptr<StatusNotifierItem> item_;
    SessionBus sessionBus_;
};

// The item that has registered with `panel`, and calls of it as that panel makes them.
struct Shown {
    explicit Shown(PanelStandIn& panel)
        : name(panel.awaitItem()), client(panel.client()), menu(menuPath()) {}

    [[nodiscard]] std::string property(const char* property) const {
        return client.property(name, kPath, kItem, property);
    }
    [[nodiscard]] Variant call(const char* method, GVariant* parameters) const {
        return client.call(name, kPath, kItem, method, parameters);
    }
    // Calls a method of the menu. Returns the answer in GVariant's text form; "" for an error.
    [[nodiscard]] std::string ask(const char* method, const char* parameters) const {
        const Variant answer =
            client.call(name, menu.c_str(), kMenu, method, g_variant_new_parsed(parameters));
        return answer ? Client::text(answer.get()) : "";
    }
    [[nodiscard]] std::string menuPath() const {
        const std::string printed = property("Menu");  // printed as (<'/path'>,)
        const std::size_t start = printed.find('\'') + 1;
        return printed.substr(start, printed.rfind('\'') - start);
    }

    std::string name;
    const Client& client;
    std::string menu;
};

TEST_F(StatusNotifierItemTest, registers_with_each_panel_that_comes) {
    std::string name;
    for (int round = 0; round < 3; ++round) {
        PanelStandIn panel(address());
        name = panel.awaitItem();
        EXPECT_TRUE(name.starts_with(":")) << name;
        EXPECT_EQ(Shown(panel).property("Status"), "(<'Active'>,)");
    }
}

TEST_F(StatusNotifierItemTest, has_a_name_of_its_own_on_the_bus_while_it_lives) {
    PanelStandIn panel(address());
    const std::string connection = panel.awaitItem();
    const std::string name = "org.kde.StatusNotifierItem-" + std::to_string(::getpid()) + "-";
    const auto owners = [&] {
        const Variant names =
            panel.client().call(kBusName, kBusPath, kBusName, "ListNames", nullptr);
        return names ? Client::text(names.get()) : "";
    };
    EXPECT_NE(owners().find(name), std::string::npos);
    dropItem();
    EXPECT_TRUE(processes::becomesTrue([&] { return owners().find(name) == std::string::npos; }));
    EXPECT_EQ(panel.client().property(connection, kPath, kItem, "Title"), "");
}

struct Property {
    const char* name;
    const char* value;
};

TEST_F(StatusNotifierItemTest, tells_panels_what_it_is) {
    PanelStandIn panel(address());
    const Shown item(panel);
    const Property kProperties[] = {
        {"Category", "(<'ApplicationStatus'>,)"},
        {"Id", "(<'tavolauncher'>,)"},
        {"Title", "(<'Something'>,)"},
        {"Status", "(<'Active'>,)"},
        {"ToolTip", "(<('', @a(iiay) [], 'Something', '')>,)"},
        {"ItemIsMenu", "(<false>,)"},
        {"IconName", "(<''>,)"},
        {"IconAccessibleDesc", "(<'Something'>,)"},
        {"AttentionAccessibleDesc", "(<'Something'>,)"},
        {"AttentionIconPixmap", "(<@a(iiay) []>,)"},
    };
    for (const Property& property : kProperties) {
        SCOPED_TRACE(property.name);
        EXPECT_EQ(item.property(property.name), property.value);
    }
    EXPECT_EQ(item.property("Nonsense"), "");
}

TEST_F(StatusNotifierItemTest, gives_its_images_as_alpha_red_green_blue) {
    PanelStandIn panel(address());
    EXPECT_EQ(Shown(panel).property("IconPixmap"),
              "(<[(1, 1, [byte 0x80, 0xff, 0x40, 0x20]), "
              "(2, 2, [0x01, 0x02, 0x03, 0x04, 0x00, 0x00, 0x00, 0x00, "
              "0x00, 0x00, 0x00, 0x00, 0xff, 0xff, 0xff, 0xff])]>,)");
}

TEST_F(StatusNotifierItemTest, a_click_has_the_token_that_came_before_it_and_the_next_has_none) {
    PanelStandIn panel(address());
    const Shown item(panel);
    EXPECT_TRUE(item.call("ProvideXdgActivationToken", g_variant_new("(s)", "old")));
    EXPECT_TRUE(item.call("ProvideXdgActivationToken", g_variant_new("(s)", "token")));
    EXPECT_TRUE(item.call("Activate", g_variant_new("(ii)", 3, 4)));
    EXPECT_EQ(awaitClick(), (StatusItemClick{.request = {"", "token"}}));
    EXPECT_TRUE(item.call("Activate", g_variant_new("(ii)", -1, -1)));
    EXPECT_EQ(awaitClick(), StatusItemClick{});
}

TEST_F(StatusNotifierItemTest,
       a_token_holds_for_the_click_that_follows_within_seconds_and_no_later_one) {
    PanelStandIn panel(address());
    const Shown item(panel);
    for (const auto& [pause, token] : {std::pair(std::chrono::milliseconds(4900), "token"),
                                       std::pair(std::chrono::milliseconds(5100), "")}) {
        SCOPED_TRACE(pause.count());
        EXPECT_TRUE(item.call("ProvideXdgActivationToken", g_variant_new("(s)", "token")));
        pass(pause);
        EXPECT_TRUE(item.call("Activate", g_variant_new("(ii)", 0, 0)));
        EXPECT_EQ(awaitClick(), (StatusItemClick{.request = {"", token}}));
        EXPECT_TRUE(item.call("Activate", g_variant_new("(ii)", 0, 0)));
        EXPECT_EQ(awaitClick(), StatusItemClick{});
    }
}

TEST_F(StatusNotifierItemTest, a_token_is_forgotten_when_the_bus_is_lost) {
    {
        PanelStandIn panel(address());
        EXPECT_TRUE(Shown(panel).call("ProvideXdgActivationToken", g_variant_new("(s)", "token")));
    }
    bus_.end();
    std::filesystem::remove(folder_.path("bus"));
    const processes::PrivateBus next(folder_);
    PanelStandIn panel(address());
    EXPECT_TRUE(Shown(panel).call("Activate", g_variant_new("(ii)", 0, 0)));
    EXPECT_EQ(awaitClick(), StatusItemClick{});
}

TEST_F(StatusNotifierItemTest, a_token_that_no_compositor_makes_counts_for_nothing) {
    PanelStandIn panel(address());
    const Shown item(panel);
    const std::string huge(100000, 'x');
    EXPECT_TRUE(item.call("ProvideXdgActivationToken", g_variant_new("(s)", huge.c_str())));
    EXPECT_TRUE(item.call("Activate", g_variant_new("(ii)", 0, 0)));
    EXPECT_EQ(awaitClick(), StatusItemClick{});
}

TEST_F(StatusNotifierItemTest, a_panel_that_draws_no_menus_asks_for_ours_at_a_point) {
    PanelStandIn panel(address());
    const Shown item(panel);
    EXPECT_TRUE(item.call("ProvideXdgActivationToken", g_variant_new("(s)", "token")));
    EXPECT_TRUE(item.call("ContextMenu", g_variant_new("(ii)", -3, 4)));
    EXPECT_EQ(awaitClick(), (StatusItemClick{.menuAt = {{-3, 4}}, .request = {"", "token"}}));
}

TEST_F(StatusNotifierItemTest, the_wheel_and_the_middle_button_do_nothing) {
    PanelStandIn panel(address());
    const Shown item(panel);
    EXPECT_TRUE(item.call("Scroll", g_variant_new("(is)", 120, "vertical")));
    EXPECT_TRUE(item.call("SecondaryActivate", g_variant_new("(ii)", 0, 0)));
    EXPECT_EQ(clicks(), 0U);
}

TEST_F(StatusNotifierItemTest, the_menu_has_its_entries_in_order_with_divider_and_shortcut) {
    PanelStandIn panel(address());
    EXPECT_EQ(Shown(panel).ask("GetLayout", "(0, -1, @as [])"),
              "(1, (0, {'children-display': <'submenu'>}, "
              "[<(1, {'enabled': <true>, 'visible': <true>, 'label': <'Open__it'>}, @av [])>, "
              "<(2, {'enabled': <true>, 'visible': <true>, 'type': <'separator'>}, @av [])>, "
              "<(3, {'enabled': <true>, 'visible': <true>, 'label': <'Quit'>, "
              "'shortcut': <[['Control', 'q']]>}, @av [])>]))");
}

struct Question {
    const char* name;
    const char* method;
    const char* parameters;
    const char* answer;
};

TEST_F(StatusNotifierItemTest, the_menu_answers_for_parts_of_itself) {
    PanelStandIn panel(address());
    const Shown item(panel);
    const Question kQuestions[] = {
        {"the root alone", "GetLayout", "(0, 0, ['label'])", "(1, (0, {}, []))"},
        {"one entry", "GetLayout", "(3, -1, ['label'])", "(1, (3, {'label': <'Quit'>}, []))"},
        {"some entries", "GetGroupProperties", "([3, 99, 1], ['label'])",
         "([(3, {'label': <'Quit'>}), (1, {'label': <'Open__it'>})],)"},
        {"all of them", "GetGroupProperties", "(@ai [], ['type'])",
         "([(0, {}), (1, {}), (2, {'type': <'separator'>}), (3, {})],)"},
        {"one property", "GetProperty", "(3, 'label')", "(<'Quit'>,)"},
        {"about to show", "AboutToShow", "(0,)", "(false,)"},
        {"some about to show", "AboutToShowGroup", "([0, 7],)", "([], [7])"},
        {"none about to show", "AboutToShowGroup", "(@ai [],)", "([], [])"},
        {"no events", "EventGroup", "(@a(isvu) [],)", "([],)"},
    };
    for (const Question& question : kQuestions) {
        SCOPED_TRACE(question.name);
        // Removes the types, with which GVariant prints an empty array or not, depending on its
        // neighbours.
        std::string answer = item.ask(question.method, question.parameters);
        for (const char* const type : {"@a{sv} ", "@av ", "@ai ", "@a(ia{sv}) "}) {
            for (std::size_t at = 0; (at = answer.find(type)) != std::string::npos;) {
                answer.erase(at, std::string(type).size());
            }
        }
        EXPECT_EQ(answer, question.answer);
    }
}

TEST_F(StatusNotifierItemTest, an_entry_is_chosen_by_a_click_on_it_and_by_nothing_else) {
    PanelStandIn panel(address());
    const Shown item(panel);
    EXPECT_NE(item.ask("Event", "(0, 'opened', <''>, uint32 0)"), "");
    EXPECT_NE(item.ask("Event", "(0, 'clicked', <''>, uint32 0)"), "");
    EXPECT_NE(item.ask("Event", "(1, 'hovered', <1>, uint32 0)"), "");
    EXPECT_NE(item.ask("Event", "(2, 'clicked', <''>, uint32 0)"), "");
    EXPECT_NE(item.ask("Event", "(3, 'clicked', <{'some': <1>}>, uint32 7)"), "");
    EXPECT_EQ(awaitClick(), (StatusItemClick{.entry = 2, .request = {}}));
    EXPECT_EQ(item.ask("EventGroup",
                       "([(9, 'clicked', <''>, uint32 0), (1, 'clicked', <''>, uint32 0)],)"),
              "([9],)");
    EXPECT_EQ(awaitClick(), (StatusItemClick{.entry = 0, .request = {}}));
    EXPECT_EQ(clicks(), 0U);
}

TEST_F(StatusNotifierItemTest, the_token_goes_with_a_chosen_entry_as_well) {
    PanelStandIn panel(address());
    const Shown item(panel);
    EXPECT_TRUE(item.call("ProvideXdgActivationToken", g_variant_new("(s)", "token")));
    EXPECT_NE(item.ask("Event", "(1, 'clicked', <''>, uint32 0)"), "");
    EXPECT_EQ(awaitClick(), (StatusItemClick{.entry = 0, .request = {"", "token"}}));
}

TEST_F(StatusNotifierItemTest, calls_that_make_no_sense_are_refused_and_change_nothing) {
    PanelStandIn panel(address());
    const Shown item(panel);
    const Question kCalls[] = {
        {"unknown entry", "GetLayout", "(4, -1, @as [])", ""},
        {"below the first", "GetLayout", "(-1, -1, @as [])", ""},
        {"the lowest number", "GetLayout", "(-2147483648, 1, @as [])", ""},
        {"the highest number", "GetLayout", "(2147483647, 1, @as [])", ""},
        {"too little", "GetLayout", "(0, -1)", ""},
        {"wrong types", "GetLayout", "('0', -1, @as [])", ""},
        {"too much", "AboutToShow", "(0, 0)", ""},
        {"property of no entry", "GetProperty", "(9, 'label')", ""},
        {"no such property", "GetProperty", "(1, 'nonsense')", ""},
        {"property that a divider lacks", "GetProperty", "(2, 'label')", ""},
        {"event of no entry", "Event", "(9, 'clicked', <''>, uint32 0)", ""},
        {"event without a time", "Event", "(1, 'clicked', <''>)", ""},
        {"event below the first", "Event", "(-1, 'clicked', <''>, uint32 0)", ""},
        {"events of no entry", "EventGroup", "([(9, 'clicked', <''>, uint32 0)],)", ""},
        {"showing no entry", "AboutToShow", "(17,)", ""},
        {"no such method", "Nonsense", "(1,)", ""},
    };
    for (const Question& call : kCalls) {
        SCOPED_TRACE(call.name);
        EXPECT_EQ(item.ask(call.method, call.parameters), "");
    }
    EXPECT_FALSE(item.call("Activate", g_variant_new("(s)", "here")));
    EXPECT_FALSE(item.call("Nonsense", nullptr));
    EXPECT_FALSE(item.call("ProvideXdgActivationToken", g_variant_new("(i)", 1)));
    EXPECT_EQ(clicks(), 0U);
    EXPECT_EQ(item.ask("GetProperty", "(3, 'label')"), "(<'Quit'>,)");
}

}  // namespace
}  // namespace tavo
