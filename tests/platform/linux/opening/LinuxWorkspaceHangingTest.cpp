// A disk and an X server that hang: other applications open, and ending is quick.
#include <csignal>

#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"

namespace tavo {
namespace {

using namespace std::chrono_literals;
using processes::becomesTrue;
using processes::Openings;
using processes::OpeningTest;

// Makes starting a file hang, as on a disk that does not answer. While a process holds a write
// lease (fcntl(2)) on a file, the kernel lets others that open the file wait.
class HangingFile {
public:
    explicit HangingFile(const std::string& path)
        : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        EXPECT_EQ(::fcntl(file_.get(), F_SETSIG, SIGURG), 0);  // ignored unless it is handled
        EXPECT_EQ(::fcntl(file_.get(), F_SETLEASE, F_WRLCK), 0);
    }

private:
    FileDescriptor file_;
};

class HangingOpening : public OpeningTest {
protected:
    // Checks that the bus thread still opens others, and that everything ends in less than 0.5
    // seconds.
    void expectNothingWaits() {
        EXPECT_EQ(open(scriptEntry("echo other >" + report_.path())).text(), "(no error)");
        EXPECT_EQ(reported(), "other");
        expectQuickEnd();
    }

    void expectQuickEnd() {
        const auto before = std::chrono::steady_clock::now();
        workspace_.reset();
        sessionBus_.reset();
        EXPECT_LT(std::chrono::steady_clock::now() - before, 500ms);
    }
};

TEST_F(HangingOpening, a_program_on_a_disk_that_hangs_holds_up_nothing_else) {
    const HangingFile program(folder_.script("Foo.app/Foo", ""));
    Openings opening(queue_);
    begin(folder_.path("Foo.app"), opening);
    EXPECT_TRUE(becomesTrue([] { return processes::children().size() == 1; }));
    expectNothingWaits();
    EXPECT_EQ(opening.now().calls, 0);
}

TEST_F(HangingOpening, an_x_server_that_hangs_holds_up_no_end) {
    const std::string display = ':' + std::to_string(100000 + ::getpid());
    const std::filesystem::path socket = "/tmp/.X11-unix/X" + display.substr(1);
    std::filesystem::create_directory(socket.parent_path());
    const processes::SilentSocket server(socket);
    added_ = {"DISPLAY=" + display};
    Openings opening(queue_);
    begin(scriptEntry("echo ran >" + report_.path(), "StartupNotify=true\n"), opening);
    EXPECT_TRUE(server.awaitClient());
    std::filesystem::remove(socket);
    expectQuickEnd();
    // The program had not been started when the workspace ended. It is started now, on its own
    // thread.
    EXPECT_TRUE(processes::children().empty());
    EXPECT_EQ(reported(), "ran");
}

}  // namespace
}  // namespace tavo
