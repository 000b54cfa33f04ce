#include <csignal>

#include "platform/posix/PosixChildProcess.h"
#include "tests/contracts/ChildProcessContract.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using processes::Folder;
using processes::Report;
using std::chrono::milliseconds;

// A test that passes never waits for this long.
constexpr ChildProcessLimits kPatient{.time = processes::kPatience};

struct PosixChildProcessRig {
    ChildProcess& processes() { return *real; }
    static void expect(const std::string& /*executable*/,
                       const std::vector<std::string>& /*arguments*/,
                       const std::optional<std::string>& /*output*/) {}

    std::unique_ptr<ChildProcess> real = makePosixChildProcess(kPatient);
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, ChildProcessContract, PosixChildProcessRig);

std::optional<std::string> shell(const std::string& script, ChildProcessLimits limits = kPatient) {
    return makePosixChildProcess(limits)->output("/bin/sh", {"-c", script});
}

TEST(PosixChildProcess, output_of_exactly_the_limit_is_an_answer_and_one_byte_more_is_none) {
    ChildProcessLimits limits = kPatient;
    limits.bytes = 100000;
    EXPECT_EQ(shell("head -c 100000 /dev/zero", limits).value_or("").size(), 100000U);
    EXPECT_EQ(shell("head -c 100001 /dev/zero", limits), std::nullopt);
}

TEST(PosixChildProcess, endless_output_ends_at_the_limit) {
    EXPECT_EQ(shell("cat /dev/zero"), std::nullopt);
    EXPECT_TRUE(processes::children().empty());
}

TEST(PosixChildProcess, a_child_that_does_not_end_is_ended) {
    EXPECT_EQ(shell("echo 1; exec sleep 1000", {.time = milliseconds(50)}), std::nullopt);
    EXPECT_TRUE(processes::children().empty());
}

TEST(PosixChildProcess, closing_the_output_is_not_ending) {
    EXPECT_EQ(shell("echo 1; exec >&-; exec sleep 1000", {.time = milliseconds(50)}), std::nullopt);
    EXPECT_TRUE(processes::children().empty());
}

TEST(PosixChildProcess, what_an_overdue_child_started_ends_with_it) {
    const Folder folder;
    Report report(folder);
    // The grandchild keeps the output pipe open, long after the shell has ended.
    EXPECT_EQ(shell("sleep 1000 & echo $! >" + report.path(), {.time = milliseconds(1500)}),
              std::nullopt);
    const auto grandchild = report.line();
    ASSERT_TRUE(grandchild);
    EXPECT_TRUE(processes::becomesTrue([&] {
        std::ifstream status("/proc/" + *grandchild + "/stat");
        std::string text((std::istreambuf_iterator<char>(status)), {});
        return text.empty() || text.find(") Z ") != std::string::npos;
    }));
}

TEST(PosixChildProcess, standard_error_is_dropped) {
    EXPECT_EQ(shell("echo out; echo noise >&2; readlink /proc/$$/fd/2"), "out\n/dev/null\n");
}

TEST(PosixChildProcess, standard_input_is_empty) {
    EXPECT_EQ(shell("cat; echo end"), "end\n");
}

TEST(PosixChildProcess, a_child_has_the_standard_descriptors_alone) {
    const int leaked = ::open("/dev/null", O_RDONLY);  // no O_CLOEXEC: exec would keep it open
    ASSERT_GE(leaked, 3);
    const auto open = shell("for n in $(seq 0 50); do [ -e /proc/$$/fd/$n ] && echo $n; done");
    EXPECT_EQ(open, "0\n1\n2\n");
    ::close(leaked);
}

TEST(PosixChildProcess, a_folder_and_a_file_without_permission_cannot_be_run) {
    const Folder folder;
    const auto processes = makePosixChildProcess(kPatient);
    EXPECT_EQ(processes->output(folder.path(), {}), std::nullopt);
    EXPECT_EQ(processes->output(folder.write("file", "#!/bin/sh\necho 1\n"), {}), std::nullopt);
}

TEST(PosixChildProcess, many_runs_leave_no_zombie_and_no_descriptor) {
    const auto processes = makePosixChildProcess(kPatient);
    ASSERT_EQ(shell("echo 1"), "1\n");
    const auto before = processes::openDescriptors();
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(processes->output("/bin/echo", {"x"}), "x\n");
        ASSERT_EQ(processes->output("/nonexistent", {}), std::nullopt);
    }
    EXPECT_EQ(processes::openDescriptors(), before);
    EXPECT_TRUE(processes::children().empty());
}

// Gives a signal this disposition; the destructor restores the former one.
class Disposition {
public:
    Disposition(int signal, sighandler_t handler)
        : signal_(signal), before_(std::signal(signal, handler)) {}
    Disposition(const Disposition&) = delete;
    Disposition& operator=(const Disposition&) = delete;
    ~Disposition() { std::signal(signal_, before_); }

private:
    int signal_;
    sighandler_t before_;
};

TEST(PosixChildProcess, works_where_ended_children_are_ignored) {
    const Disposition ignored(SIGCHLD, SIG_IGN);
    EXPECT_EQ(shell("echo 1; exit 3"), "1\n");
    EXPECT_EQ(shell("exec sleep 1000", {.time = milliseconds(50)}), std::nullopt);
    EXPECT_TRUE(processes::children().empty());
}

TEST(PosixChildProcess, children_start_with_default_signals) {
    const Disposition ignoredPipe(SIGPIPE, SIG_IGN);
    const Disposition ignoredChildren(SIGCHLD, SIG_IGN);
    const auto status = shell("grep -E '^Sig(Ign|Blk):' /proc/self/status").value_or("");
    std::istringstream lines(status);
    for (std::string name, bits; lines >> name >> bits;) {
        SCOPED_TRACE(name);
        // Leaves out signals 32 and 33, which glibc keeps for itself.
        EXPECT_EQ(std::stoull(bits, nullptr, 16) & 0x7fffffffU, 0U);
    }
    EXPECT_NE(status, "");
}

}  // namespace
}  // namespace tavo
