#include <csignal>
#include <memory>

#include <xcb/xcb.h>

#include "platform/linux/x11/StartupNotification.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/XServer.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::becomesTrue;
using processes::Openings;
using processes::OpeningTest;
using std::chrono::milliseconds;

// Listens for startup notification messages, as a window manager does.
class Listener {
public:
    explicit Listener(const std::string& display)
        : connection_(xcb_connect(display.c_str(), nullptr), xcb_disconnect) {
        const xcb_screen_t* const screen =
            xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
        constexpr std::uint32_t kEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection_.get(), screen->root, XCB_CW_EVENT_MASK, &kEvents);
        begin_ = atom("_NET_STARTUP_INFO_BEGIN");
        rest_ = atom("_NET_STARTUP_INFO");
    }

    // Waits until the next message is complete, and returns it; "(nothing)" when none comes.
    std::string message() {
        std::string text;
        const auto giveUp = std::chrono::steady_clock::now() + processes::kPatience;
        while (std::chrono::steady_clock::now() < giveUp) {
            const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
                xcb_poll_for_event(connection_.get()), std::free);
            if (!event) {
                ::poll(nullptr, 0, 2);
                continue;
            }
            if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE) {
                continue;
            }
            const auto* const piece = reinterpret_cast<xcb_client_message_event_t*>(event.get());
            EXPECT_EQ(piece->type, text.empty() ? begin_ : rest_);
            EXPECT_EQ(piece->format, 8);
            const std::string bytes(reinterpret_cast<const char*>(piece->data.data8), 20);
            text += bytes;
            if (const std::size_t end = text.find('\0'); end != std::string::npos) {
                return text.substr(0, end);
            }
        }
        return "(nothing)";
    }

    // Keeps the server from answering any other client.
    void grab() {
        xcb_grab_server(connection_.get());
        atom("GRABBED");  // its reply means that the server is grabbed
    }
    void release() {
        xcb_ungrab_server(connection_.get());
        atom("RELEASED");
    }

private:
    xcb_atom_t atom(std::string_view name) {
        const auto cookie = xcb_intern_atom(connection_.get(), 0,
                                            static_cast<std::uint16_t>(name.size()), name.data());
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(connection_.get(), cookie, nullptr), std::free);
        return reply ? reply->atom : XCB_NONE;
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_atom_t begin_ = XCB_NONE;
    xcb_atom_t rest_ = XCB_NONE;
};

class StartupNotification : public OpeningTest {
protected:
    void SetUp() override {
        added_ = {"DISPLAY=" + server_.display()};
        listener_.emplace(server_.display());
    }

    // An entry that asks for startup notification, and whose program keeps running.
    std::string lastingEntry() const {
        return scriptEntry("echo \"$DESKTOP_STARTUP_ID\" >" + report_.path() + "; exec sleep 1000",
                           "StartupNotify=true\n");
    }

    // The startup id in a message; it is between the first two quotation marks.
    static std::string idOf(const std::string& message) {
        const std::size_t begin = message.find('"') + 1;
        return message.substr(begin, message.find('"', begin) - begin);
    }

    XServer server_;
    std::optional<Listener> listener_;
};

TEST_F(StartupNotification, a_start_is_announced_with_everything_known_of_it) {
    announceStart(server_.display(), {"id_TIME7", "Two \"words\"\\", "/bin/x", "x.desktop"});
    EXPECT_EQ(listener_->message(),
              "new: ID=\"id_TIME7\" NAME=\"Two \\\"words\\\"\\\\\" SCREEN=\"0\" BIN=\"/bin/x\" "
              "APPLICATION_ID=\"x.desktop\"");
}

TEST_F(StartupNotification, the_end_of_a_start_is_announced_whatever_its_length) {
    for (std::size_t length = 1; length < 45; ++length) {
        const std::string id(length, 'x');
        announceStartOver(server_.display(), id);
        EXPECT_EQ(listener_->message(), "remove: ID=\"" + id + "\"");
    }
}

TEST_F(StartupNotification, text_of_any_kind_arrives_as_text) {
    announceStartOver(server_.display(), std::string("a\xff\0b è", 7));
    EXPECT_EQ(listener_->message(), "remove: ID=\"a\uFFFDb è\"");
}

TEST_F(StartupNotification, of_long_text_the_beginning_arrives) {
    const std::string endless(64UL * 1024 * 1024, 'y');
    EXPECT_TRUE(announceStart(server_.display(), {endless, endless, endless, endless}));
    const std::string kept(4096, 'y');
    EXPECT_EQ(listener_->message(), "new: ID=\"" + kept + "\" NAME=\"" + kept +
                                        "\" SCREEN=\"0\" BIN=\"" + kept + "\" APPLICATION_ID=\"" +
                                        kept + "\"");
}

TEST_F(StartupNotification, without_a_server_nothing_happens) {
    EXPECT_FALSE(announceStart(":987654", {"id", "name", "", ""}));
    EXPECT_FALSE(announceStartOver("nonsense", "id"));
    EXPECT_TRUE(announceStartOver(server_.display(), "after"));
    EXPECT_EQ(listener_->message(), "remove: ID=\"after\"");
}

TEST_F(StartupNotification, an_entry_that_wants_it_is_announced_until_its_program_ends) {
    open(scriptEntry("echo \"$DESKTOP_STARTUP_ID\" >" + report_.path(), "StartupNotify=true\n"));
    const std::string id = reported();
    const std::string begin = listener_->message();
    EXPECT_TRUE(begin.starts_with("new: ID=\"" + id + "\" NAME=\"App\"")) << begin;
    EXPECT_EQ(listener_->message(), "remove: ID=\"" + id + "\"");
}

TEST_F(StartupNotification, a_start_that_fails_is_announced_as_over) {
    EXPECT_NE(open(scriptEntry("exit 3", "StartupNotify=true\n")).text(), "(no error)");
    const std::string begin = listener_->message();
    EXPECT_EQ(listener_->message(), "remove: ID=\"" + idOf(begin) + "\"");
}

TEST_F(StartupNotification, an_entry_that_does_not_want_it_is_not_announced) {
    open(scriptEntry(""));
    announceStartOver(server_.display(), "next");
    EXPECT_EQ(listener_->message(), "remove: ID=\"next\"");
}

TEST_F(StartupNotification, the_first_window_ends_the_announcement) {
    watchWindows();
    Openings opening(queue_);
    begin(lastingEntry(), opening);
    const std::string id = reported();
    EXPECT_EQ(idOf(listener_->message()), id);
    EXPECT_TRUE(becomesTrue([&] { return queue_.waiting() > 0; }));
    queue_.run();
    EXPECT_EQ(opening.now().calls, 0);
    showWindow();
    EXPECT_EQ(listener_->message(), "remove: ID=\"" + id + "\"");
    const Answer answer = opening.wait();
    ASSERT_TRUE(answer.running);
    ::kill(answer.running->processIdentifier, SIGKILL);
}

TEST_F(StartupNotification, the_end_of_its_time_ends_the_announcement_while_the_program_runs) {
    startingTime_ = milliseconds(20);
    patience_ = milliseconds(1);
    const Answer answer = open(lastingEntry());
    ASSERT_TRUE(answer.running);
    const std::string id = reported();
    EXPECT_EQ(idOf(listener_->message()), id);
    EXPECT_EQ(listener_->message(), "remove: ID=\"" + id + "\"");
    // The end of the program must not announce the end of its start a second time.
    ::kill(answer.running->processIdentifier, SIGKILL);
    EXPECT_TRUE(becomesTrue(
        [&] { return !processes::children().contains(answer.running->processIdentifier); }));
    workspace_.reset();
    announceStartOver(server_.display(), "next");
    EXPECT_EQ(listener_->message(), "remove: ID=\"next\"");
}

TEST_F(StartupNotification, a_server_that_has_stopped_keeps_no_program_from_starting) {
    ::kill(server_.process(), SIGSTOP);
    EXPECT_FALSE(announceStartOver(server_.display(), "id"));
    EXPECT_EQ(open(scriptEntry("echo ran >" + report_.path(), "StartupNotify=true\n")).text(),
              "(no error)");
    EXPECT_EQ(reported(), "ran");
    ::kill(server_.process(), SIGCONT);
}

TEST_F(StartupNotification,
       a_server_that_another_client_has_grabbed_keeps_no_program_from_starting) {
    listener_->grab();
    EXPECT_FALSE(announceStartOver(server_.display(), "id"));
    EXPECT_EQ(open(scriptEntry("echo ran >" + report_.path(), "StartupNotify=true\n")).text(),
              "(no error)");
    EXPECT_EQ(reported(), "ran");
    listener_->release();
    EXPECT_TRUE(announceStartOver(server_.display(), "after"));
}

}  // namespace
}  // namespace tavo
