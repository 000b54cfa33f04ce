// Bundles and entries that are not what they should be, many starts, and a launcher that is killed.
#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::becomesTrue;
using processes::OpeningTest;

class HostileBundle : public OpeningTest {
protected:
    HostileBundle() {
        startingTime_ = std::chrono::milliseconds(0);  // tests open one bundle again and again
        folder_.script("Foo.app/Contents/MacOS/Foo", "echo ran >" + report_.path());
    }

    [[nodiscard]] std::string path() const { return folder_.path("Foo.app"); }
    [[nodiscard]] std::string plist() const { return path() + "/Contents/Info.plist"; }
    void describe(const std::string& content) const {
        folder_.write("Foo.app/Contents/Info.plist", content);
    }

    // Checks that the program is found by the bundle's name and runs, whatever Info.plist holds.
    void expectPlainBundle() {
        const auto facts = workspace().bundle(path());
        ASSERT_TRUE(facts);
        EXPECT_EQ(facts->identifier, std::nullopt);
        EXPECT_EQ(facts->signature, std::nullopt);
        EXPECT_EQ(facts->executablePath, path() + "/Contents/MacOS/Foo");
        EXPECT_EQ(open(path()).text(), "(no error)");
        EXPECT_EQ(reported(), "ran");
    }
};

TEST_F(HostileBundle, a_description_of_garbage_says_nothing) {
    std::string garbage;
    for (int i = 0; i < 100000; ++i) {
        garbage += static_cast<char>(i * 37 % 256);
    }
    describe(garbage);
    expectPlainBundle();
}

TEST_F(HostileBundle, a_description_of_a_hundred_megabytes_says_nothing) {
    std::ofstream file(plist(), std::ios::binary);
    file << "<plist version=\"1.0\"><dict><key>CFBundleSignature</key><string>aplt</string>";
    const std::string block(1U << 20U, ' ');
    for (int i = 0; i < 100; ++i) {
        file << block;
    }
    file << "</dict></plist>";
    file.close();
    expectPlainBundle();
}

TEST_F(HostileBundle, a_description_nested_a_hundred_thousand_deep_says_nothing) {
    std::string nested =
        "<plist "
        "version=\"1.0\"><dict><key>CFBundleSignature</key><string>aplt</string><key>x</key>";
    for (const char* const tag : {"<array>", "</array>"}) {
        for (int i = 0; i < 100000; ++i) {
            nested += tag;
        }
    }
    // Within the size limit, so that only the nesting is a reason to refuse the file.
    describe(nested.substr(0, 900000));
    expectPlainBundle();
}

TEST_F(HostileBundle, a_description_that_is_a_folder_a_pipe_or_a_looping_link_says_nothing) {
    std::filesystem::create_directory(plist());
    expectPlainBundle();
    std::filesystem::remove(plist());
    ASSERT_EQ(::mkfifo(plist().c_str(), 0600), 0);
    expectPlainBundle();
    std::filesystem::remove(plist());
    std::filesystem::create_symlink("Info.plist", plist());
    expectPlainBundle();
}

TEST_F(HostileBundle, a_program_that_is_a_folder_is_told) {
    describe(
        "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>applet</string></dict>"
        "</plist>");
    std::filesystem::create_directory(path() + "/Contents/MacOS/applet");
    EXPECT_EQ(open(path()).text(), "Il programma «" + path() +
                                       "/Contents/MacOS/applet» è una cartella e non si può "
                                       "avviare.");
}

TEST_F(HostileBundle, a_program_that_is_a_looping_link_is_none) {
    std::filesystem::remove(path() + "/Contents/MacOS/Foo");
    std::filesystem::create_symlink("Loop", path() + "/Contents/MacOS/Foo");
    std::filesystem::create_symlink("Foo", path() + "/Contents/MacOS/Loop");
    EXPECT_EQ(workspace().bundle(path())->executablePath, std::nullopt);
    EXPECT_EQ(open(path()).text(), "L’app «" + path() + "» non contiene un programma da avviare.");
}

TEST_F(HostileBundle, a_bundle_or_an_entry_that_is_a_looping_link_is_told) {
    for (const std::string name : {"Loop.app", "loop.desktop"}) {
        std::filesystem::create_symlink(name, folder_.path(name));
        EXPECT_EQ(workspace().bundle(folder_.path(name)), std::nullopt);
        EXPECT_EQ(open(folder_.path(name)).text(),
                  "L’app «" + folder_.path(name) + "» non esiste più.");
    }
}

TEST_F(HostileBundle, a_bundle_in_a_loop_of_folders_is_opened) {
    std::filesystem::create_symlink(path(), path() + "/Contents/Inner.app");
    EXPECT_EQ(open(path() + "/Contents/Inner.app/Contents/Inner.app").text(),
              "L’app «" + path() +
                  "/Contents/Inner.app/Contents/Inner.app» non contiene un programma da avviare.");
    EXPECT_EQ(open(path() + "/Contents/Inner.app/Contents/../../Foo.app").text(), "(no error)");
    EXPECT_EQ(reported(), "ran");
}

// --- Many starts ---------------------------------------------------------------------------------

class ManyStarts : public OpeningTest {
protected:
    ~ManyStarts() override {
        for (const pid_t process : running_) {
            ::kill(process, SIGKILL);
        }
    }

    // Asks the launcher how many descriptors it has open and how many of its children are zombies.
    static std::pair<int, int> countsOf(ChildProgram& launcher) {
        std::istringstream line(launcher.ask(""));
        std::pair<int, int> counts{-1, -1};
        line >> counts.first >> counts.second;
        return counts;
    }

    std::vector<pid_t> running_;
};

// Whether the process with this PID runs the program that these tests start.
bool runs(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
    std::string command;
    std::getline(file, command);
    return command.find("sleep") != std::string::npos;
}

TEST_F(ManyStarts, two_hundred_leave_no_zombie_and_no_descriptor_and_survive_a_killed_launcher) {
    const processes::Variable home("HOME", home_);
    ChildProgram launcher({std::string(TAVO_TEST_PROGRAMS) + "/tavo_starter"});
    const std::string ending = entry("Exec=/bin/true\n", "ending.desktop");
    const std::string lasting = entry("Exec=/bin/sleep 1000\n", "lasting.desktop");
    folder_.script("Ending.app/Ending", "exit 1");
    folder_.script("Lasting.app/Lasting", "exec sleep 1000");

    ASSERT_NE(launcher.ask(ending), "-1");
    ASSERT_NE(launcher.ask(folder_.path("Ending.app")), "-1");
    ASSERT_TRUE(becomesTrue([&] { return countsOf(launcher).second == 0; }));
    const int before = countsOf(launcher).first;
    for (int i = 0; i < 50; ++i) {
        ASSERT_NE(launcher.ask(ending), "-1");
        ASSERT_NE(launcher.ask(folder_.path("Ending.app")), "-1");
        for (const std::string& path : {lasting, folder_.path("Lasting.app")}) {
            running_.push_back(static_cast<pid_t>(std::stol(launcher.ask(path))));
            ASSERT_GT(running_.back(), 0);
        }
    }
    EXPECT_TRUE(becomesTrue([&] { return countsOf(launcher).second == 0; }));
    // The launcher keeps one pidfd open for each program that still runs.
    EXPECT_TRUE(becomesTrue(
        [&] { return countsOf(launcher).first <= before + static_cast<int>(running_.size()); }));

    launcher.kill();
    launcher.wait();
    for (const pid_t process : running_) {
        EXPECT_TRUE(becomesTrue([process] { return runs(process); }));
        EXPECT_EQ(::getsid(process), process);
    }
}

TEST_F(ManyStarts, two_hundred_that_end_leave_the_launcher_as_it_was) {
    const processes::Variable home("HOME", home_);
    const processes::PrivateBus bus(folder_);
    const std::string name = "org.example.Activatable";
    bus.addService(name, std::string(TAVO_TEST_PROGRAMS) + "/tavo_activatable_service " + name +
                             " /dev/null answer");
    ChildProgram launcher({std::string(TAVO_TEST_PROGRAMS) + "/tavo_starter"});
    folder_.script("Ending.app/Ending", "exit 1");
    folder_.script("Lasting.app/Lasting", "exec sleep 1000");
    const std::string lasting = folder_.path("Lasting.app");
    const std::vector<std::string> applications = {
        entry("Exec=/bin/true\n", "ending.desktop"),
        entry("DBusActivatable=true\n", name + ".desktop"), folder_.path("Ending.app"), lasting};

    const auto open = [&](const std::string& path) {
        const auto process = static_cast<pid_t>(std::stol(launcher.ask(path)));
        EXPECT_GE(process, 0);
        if (path == lasting) {
            running_.push_back(process);
        }
    };
    const auto endLasting = [&] {
        for (const pid_t process : running_) {
            ::kill(process, SIGKILL);
        }
        running_.clear();
    };
    for (const std::string& path : applications) {
        open(path);
    }
    endLasting();
    // Waits until the number of open descriptors no longer changes: those of a start are closed a
    // little after its answer.
    int before = 0;
    EXPECT_TRUE(becomesTrue([&] {
        const int last = std::exchange(before, countsOf(launcher).first);
        ::poll(nullptr, 0, 50);
        return last == before && countsOf(launcher) == std::pair(before, 0);
    }));
    for (int i = 0; i < 50; ++i) {
        for (const std::string& path : applications) {
            open(path);
        }
    }
    EXPECT_TRUE(becomesTrue([&] { return countsOf(launcher).first == before + 50; }));
    endLasting();
    EXPECT_TRUE(becomesTrue([&] { return countsOf(launcher) == std::pair(before, 0); }));
}

}  // namespace
}  // namespace tavo
