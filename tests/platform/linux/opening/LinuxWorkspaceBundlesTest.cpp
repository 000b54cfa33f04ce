#include "tests/platform/linux/fixtures/OpeningFixture.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::becomesTrue;
using processes::children;
using processes::OpeningTest;

class BundleOpening : public OpeningTest {
protected:
    BundleOpening() {
        startingTime_ = std::chrono::milliseconds(0);  // tests open one bundle again and again
    }

    [[nodiscard]] std::string bundle(const std::string& body) const {
        folder_.script("Foo.app/Contents/MacOS/Foo", body);
        folder_.write("Foo.app/Contents/Info.plist",
                      "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key>"
                      "<string>org.example.Foo</string></dict></plist>");
        return folder_.path("Foo.app");
    }

    [[nodiscard]] std::string program() const { return folder_.path("Foo.app/Contents/MacOS/Foo"); }
};

TEST_F(BundleOpening, is_answered_as_soon_as_the_program_has_begun) {
    const Answer answer = open(bundle("echo $$ >" + report_.path() + "; exec sleep 1000"));
    EXPECT_EQ(answer.text(), "(no error)");
    ASSERT_TRUE(answer.running);
    EXPECT_EQ(answer.running->identifier, "org.example.Foo");
    EXPECT_EQ(std::to_string(answer.running->processIdentifier), reported());
    ::kill(answer.running->processIdentifier, SIGKILL);
    EXPECT_TRUE(becomesTrue([] { return children().empty(); }));
}

TEST_F(BundleOpening, the_program_starts_in_a_session_of_its_own_at_home_with_nothing_of_ours) {
    const int leaked = ::open("/dev/null", O_RDONLY);  // no O_CLOEXEC: exec would keep it open
    ASSERT_GE(leaked, 3);
    added_ = {"KEPT=kept", "XDG_ACTIVATION_TOKEN=ours"};
    const Answer answer = open(
        bundle("read -r pid name state parent group session rest </proc/$$/stat; "
               "open=; for n in $(seq 3 60); do "
               "[ \"$(readlink /proc/$$/fd/$n)\" = /dev/null ] && open=\"$open $n\"; done; "
               "echo $session $(pwd) $(readlink /proc/$$/fd/0) $KEPT$XDG_ACTIVATION_TOKEN$open "
               ">" +
               report_.path()));
    ASSERT_TRUE(answer.running);
    EXPECT_EQ(reported(),
              std::to_string(answer.running->processIdentifier) + " " + home_ + " /dev/null kept");
    ::close(leaked);
}

TEST_F(BundleOpening, fifty_starts_leave_no_zombie) {
    const std::string path = bundle("exit 1");
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(open(path).text(), "(no error)");
    }
    EXPECT_TRUE(becomesTrue([] { return children().empty(); }));
}

TEST_F(BundleOpening, a_bundle_without_a_program_is_told) {
    std::filesystem::create_directory(folder_.path("Foo.app"));
    EXPECT_EQ(open(folder_.path("Foo.app")).text(),
              "L’app «" + folder_.path("Foo.app") + "» non contiene un programma da avviare.");
}

TEST_F(BundleOpening, a_program_without_permission_is_told) {
    const std::string path = bundle("");
    ::chmod(program().c_str(), 0644);
    EXPECT_EQ(open(path).text(),
              "Il programma «" + program() + "» non ha il permesso di essere eseguito.");
}

TEST_F(BundleOpening, a_program_that_is_a_folder_is_told) {
    std::filesystem::create_directories(program());
    EXPECT_EQ(open(folder_.path("Foo.app")).text(),
              "Il programma «" + program() + "» è una cartella e non si può avviare.");
}

TEST_F(BundleOpening, a_missing_interpreter_is_told) {
    const std::string path = bundle("");
    folder_.write("Foo.app/Contents/MacOS/Foo", "#!/no/such/interpreter\n", 0755);
    EXPECT_EQ(open(path).text(), "Il programma «" + program() +
                                     "» richiede l’interprete «/no/such/interpreter», che non "
                                     "esiste o non si può eseguire.");
}

TEST_F(BundleOpening, a_file_that_is_no_program_is_told) {
    const std::string path = bundle("");
    folder_.write("Foo.app/Contents/MacOS/Foo", "just words\n", 0755);
    EXPECT_EQ(open(path).text(),
              "Il programma «" + program() +
                  "» non si può avviare: il formato del file non è quello di un programma.");
}

}  // namespace
}  // namespace tavo
