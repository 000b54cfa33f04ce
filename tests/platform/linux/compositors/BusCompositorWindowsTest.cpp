// What stand-ins for KWin and for the extension of GNOME Shell answer. Whether the real ones answer
// so is tried by the tests of whole desktops.
#include <chrono>
#include <condition_variable>
#include <latch>
#include <map>
#include <mutex>

#include <gmock/gmock.h>

#include "platform/linux/compositors/BusCompositorWindows.h"
#include "platform/linux/compositors/GnomeShellWindows.h"
#include "platform/linux/compositors/KWinWindows.h"
#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "tests/platform/linux/fixtures/PanelStandIn.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"

namespace tavo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

GVariant* parsed(const std::string& text) {
    GVariant* const value = g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, nullptr);
    EXPECT_NE(value, nullptr) << text;
    return value;
}

// A service on the bus that gives each method the answer that the test has set, and keeps what it
// was called with.
class Service {
public:
    // `objects`: paths and descriptions.
    Service(const std::string& address, const std::string& name,
            const std::vector<std::pair<const char*, const char*>>& objects)
        : client_(address) {
        for (const auto& [path, description] : objects) {
            objects_.push_back(std::make_unique<BusObject>(
                description,
                BusObject::Behaviour{
                    .call = [this](const char* method, GVariant* parameters,
                                   GDBusMethodInvocation* call) { take(method, parameters, call); },
                    .property = nullptr}));
            thread_.postAndWait([&, this] { objects_.back()->offer(client_.bus(), path); });
        }
        EXPECT_TRUE(client_.call(kBusName, kBusPath, kBusName, "RequestName",
                                 g_variant_new("(su)", name.c_str(), kDoNotQueue)));
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service() {
        thread_.postAndWait([this] {
            for (const auto& object : objects_) {
                object->withdraw();
            }
        });
    }

    // `answer` in GVariant's text form, for calls with these arguments; empty: never answered.
    void answer(const std::string& call, const std::string& answer) {
        const std::lock_guard lock(mutex_);
        answers_[call] = answer;
    }

    // Waits for the number of calls of `method`; the arguments of these calls.
    std::vector<std::string> calls(const std::string& method, std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, processes::kPatience,
                          [&] { return calls_[method].size() >= count; });
        return calls_[method];
    }

private:
    void take(const std::string& method, GVariant* parameters, GDBusMethodInvocation* call) {
        const std::lock_guard lock(mutex_);
        const std::string arguments = processes::Client::text(parameters);
        calls_[method].push_back(arguments);
        changed_.notify_all();
        const auto answer = answers_.find(method + arguments);
        if (answer == answers_.end()) {
            g_dbus_method_invocation_return_dbus_error(call, "org.example.Unknown", "Unknown");
        } else if (answer->second.empty()) {
            held_.push_back(call);
        } else {
            g_dbus_method_invocation_return_value(call, parsed(answer->second));
        }
    }

    processes::Client client_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, std::string> answers_;
    std::map<std::string, std::vector<std::string>> calls_;
    std::vector<GDBusMethodInvocation*> held_;
    std::vector<std::unique_ptr<BusObject>> objects_;
    GLibThread thread_;  // the last member: it uses the others
};

class BusCompositorWindowsTest : public testing::Test {
protected:
    BusCompositorWindowsTest() {
        std::latch connected(1);
        session_.thread().post([&] {
            session_.ask(processes::kPatience, [&](SessionBus::State) { connected.count_down(); });
        });
        connected.wait();
        patience(processes::kPatience);
    }

    void patience(std::chrono::milliseconds patience) {
        std::vector<std::unique_ptr<BusWindowLister>> listers;
        listers.push_back(makeKWinWindows());
        listers.push_back(makeGnomeShellWindows());
        windows_ = makeBusCompositorWindows(session_, std::move(listers), patience);
    }

    Service& kwin() {
        return service_.emplace(
            sessionBusAddress(), "org.kde.KWin",
            std::vector<std::pair<const char*, const char*>>{
                {"/WindowsRunner",
                 "<node><interface name='org.kde.krunner1'><method name='Match'>"
                 "<arg type='s' direction='in'/><arg type='a(sssida{sv})' direction='out'/>"
                 "</method><method name='Run'><arg type='s' direction='in'/>"
                 "<arg type='s' direction='in'/></method></interface></node>"},
                {"/KWin",
                 "<node><interface name='org.kde.KWin'><method name='getWindowInfo'>"
                 "<arg type='s' direction='in'/><arg type='a{sv}' direction='out'/></method>"
                 "</interface></node>"}});
    }

    Service& shell() {
        return service_.emplace(
            sessionBusAddress(), "org.tavolauncher.GnomeShell",
            std::vector<std::pair<const char*, const char*>>{
                {"/org/tavolauncher/GnomeShell",
                 "<node><interface name='org.tavolauncher.GnomeShell'>"
                 "<method name='ListWindows'><arg type='a(tsssbb)' direction='out'/></method>"
                 "<method name='ActivateWindows'><arg type='at' direction='in'/></method>"
                 "</interface></node>"}});
    }

    // What Match() lists, the actions with a window besides its activation included.
    static std::string matches(const std::vector<std::string>& windows) {
        std::string all;
        for (const std::string& window : windows) {
            for (const char* const action : {"0_", "0_", "1_"}) {
                all += std::string(all.empty() ? "" : ", ") + "('" + action + "{" + window +
                       "}', 'title', 'icon', 100, 0.8, @a{sv} {})";
            }
        }
        return all.empty() ? "(@a(sssida{sv}) [],)" : "([" + all + "],)";
    }

    // The windows' names, as "instance/class/application id" and a mark.
    std::vector<std::string> listed() {
        const auto list = windows_->list();
        if (!list) {
            return {"(not listed)"};
        }
        std::vector<std::string> all;
        for (const CompositorWindow* const window : list->windows()) {
            all.push_back(window->names.instance + "/" + window->names.className + "/" +
                          window->names.appId + (window->minimised ? " minimised" : "") +
                          (window->active ? " active" : ""));
        }
        return all;
    }

    processes::Folder folder_;
    processes::PrivateBus bus_{folder_};
    SessionBus session_{sessionBusAddress()};
    std::optional<Service> service_;
    std::unique_ptr<CompositorWindows> windows_;
};

TEST_F(BusCompositorWindowsTest, kwins_windows_are_told_by_entry_and_class_the_newest_first) {
    Service& kwin = this->kwin();
    kwin.answer("Match('',)", matches({"a", "b", "closed"}));
    kwin.answer("getWindowInfo('{a}',)",
                "({'desktopFile': <'org.kde.kcalc'>, 'resourceName': <'kcalc'>, 'resourceClass': "
                "<'org.kde.kcalc'>, 'minimized': <true>, 'caption': <'x'>},)");
    kwin.answer("getWindowInfo('{b}',)",
                "({'desktopFile': <'/usr/share/applications/xterm'>, 'resourceClass': <'XTerm'>, "
                "'resourceName': <7>},)");
    kwin.answer("getWindowInfo('{closed}',)", "(@a{sv} {},)");
    EXPECT_THAT(listed(),
                ElementsAre("/XTerm/xterm", "kcalc/org.kde.kcalc/org.kde.kcalc minimised"));
    EXPECT_FALSE(windows_->list()->knowsActive());
}

TEST_F(BusCompositorWindowsTest, kwins_windows_are_activated_in_the_order_given) {
    Service& kwin = this->kwin();
    kwin.answer("Match('',)", matches({"a", "b"}));
    kwin.answer("getWindowInfo('{a}',)", "({'resourceClass': <'a'>},)");
    kwin.answer("getWindowInfo('{b}',)", "({'resourceClass': <'b'>},)");
    const auto list = windows_->list();
    ASSERT_TRUE(list);
    const auto windows = list->windows();
    ASSERT_EQ(windows.size(), 2U);
    list->front({windows[1], windows[0]});
    EXPECT_THAT(kwin.calls("Run", 2), ElementsAre("('0_{a}', '')", "('0_{b}', '')"));
}

TEST_F(BusCompositorWindowsTest, the_shells_windows_are_told_and_activated_by_their_numbers) {
    Service& shell = this->shell();
    shell.answer("ListWindows()",
                 "([(uint64 12, 'gimp', 'Gimp', 'gimp', false, true), "
                 "(7, '', '', 'org.gnome.Calculator', true, false)],)");
    EXPECT_THAT(listed(), ElementsAre("gimp/Gimp/gimp active", "//org.gnome.Calculator minimised"));
    const auto list = windows_->list();
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->knowsActive());
    const auto windows = list->windows();
    list->front({windows[1], windows[0]});
    EXPECT_THAT(shell.calls("ActivateWindows", 1), ElementsAre("([7, 12],)"));
}

TEST_F(BusCompositorWindowsTest, a_desktop_without_windows_is_a_desktop_that_lists_them) {
    kwin().answer("Match('',)", matches({}));
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(BusCompositorWindowsTest, without_either_nothing_is_listed) {
    EXPECT_THAT(listed(), ElementsAre("(not listed)"));
}

TEST_F(BusCompositorWindowsTest, without_a_bus_nothing_is_listed) {
    bus_.end();
    EXPECT_THAT(listed(), ElementsAre("(not listed)"));
}

TEST_F(BusCompositorWindowsTest, a_compositor_that_refuses_lists_nothing) {
    kwin();
    EXPECT_THAT(listed(), ElementsAre("(not listed)"));
}

TEST_F(BusCompositorWindowsTest, a_silent_compositor_is_not_waited_for_any_longer) {
    patience(std::chrono::milliseconds(100));
    Service& kwin = this->kwin();
    kwin.answer("Match('',)", "");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(listed(), ElementsAre("(not listed)"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    kwin.answer("Match('',)", matches({"a"}));
    kwin.answer("getWindowInfo('{a}',)", "");
    EXPECT_THAT(listed(), ElementsAre("(not listed)"));
    patience(processes::kPatience);
    kwin.answer("getWindowInfo('{a}',)", "({'resourceClass': <'a'>},)");
    EXPECT_THAT(listed(), ElementsAre("/a/"));
}

TEST_F(BusCompositorWindowsTest, a_compositor_that_comes_back_lists_again) {
    kwin().answer("Match('',)", matches({}));
    EXPECT_THAT(listed(), IsEmpty());
    service_.reset();
    EXPECT_THAT(listed(), ElementsAre("(not listed)"));
    shell().answer("ListWindows()", "(@a(tsssbb) [],)");
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(BusCompositorWindowsTest, an_answer_of_another_type_is_no_answer) {
    service_.emplace(
        sessionBusAddress(), "org.tavolauncher.GnomeShell",
        std::vector<std::pair<const char*, const char*>>{
            {"/org/tavolauncher/GnomeShell",
             "<node><interface name='org.tavolauncher.GnomeShell'><method name='ListWindows'>"
             "<arg type='s' direction='out'/></method></interface></node>"}});
    service_->answer("ListWindows()", "('windows',)");
    EXPECT_THAT(listed(), ElementsAre("(not listed)"));
}

}  // namespace
}  // namespace tavo
