// Applets: bundles that start a script, whose window belongs to the script's interpreter.
#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

using std::chrono::milliseconds;

constexpr const char* kMessage =
    "Velumo non ha mostrato la sua finestra. Controlla che la sua installazione sia completa.";

// An installed applet, "Velumo", which is not running, and another one.
class AppletRecovery : public testing::Test {
protected:
    AppletRecovery() {
        harness_.install({"Velumo", "Nebula"});
        for (const char* const name : {"Velumo", "Nebula"}) {
            harness_.workspace.bundles[ModelHarness::pathOf(name)] = {
                .identifier = std::string("org.example.") + name,
                .signature = "aplt",
                .executablePath = {}};
        }
        harness_.processes.answerAnything("");
    }

    void open(const std::string& name = "Velumo") { harness_.model().open(harness_.app(name)); }

    // Opens the applet; the workspace answers at once, and what is due after that has run.
    void openAndAnswer(std::optional<Error> error = std::nullopt) {
        open();
        harness_.workspace.complete(harness_.workspace.openings.size() - 1, std::nullopt,
                                    std::move(error));
        harness_.mainQueue.run();
    }

    // From now on a process runs `executable`.
    RunningApplication run(std::int32_t process, std::optional<std::string> executable) {
        const RunningApplication application{.processIdentifier = process, .identifier = ""};
        harness_.running.running.push_back({application, std::move(executable)});
        return application;
    }

    // From now on the process finder gives this output.
    void find(const std::string& output) { harness_.processes.answerAnything(output); }

    [[nodiscard]] std::size_t checks() const { return harness_.processes.runs.size(); }
    [[nodiscard]] std::vector<RunningApplication> activated() const {
        return harness_.running.activated();
    }
    [[nodiscard]] std::string launchError() {
        return harness_.model().launchError().value_or("(none)");
    }

    ModelHarness harness_;
};

// --- What is an applet ---------------------------------------------------------------------------

struct AppletRow {
    const char* name;
    std::optional<std::string> signature;
    std::optional<std::string> executable;
    bool applet;
};

class AppletTest : public testing::TestWithParam<AppletRow> {};

TEST_P(AppletTest, decides_how_a_bundle_is_opened) {
    SCOPED_TRACE(GetParam().name);
    ModelHarness harness;
    harness.install({"A"});
    harness.workspace.bundles[ModelHarness::pathOf("A")] = {
        .identifier = "org.example.a",
        .signature = GetParam().signature,
        .executablePath = GetParam().executable};
    harness.model().open(harness.app("A"));
    ASSERT_EQ(harness.workspace.openings.size(), 1U);
    // Only an applet is opened without being activated, and is looked for by its script instead of
    // its identifier.
    EXPECT_EQ(harness.workspace.openings[0].activates, !GetParam().applet);
    EXPECT_EQ(harness.processes.runs.size(), GetParam().applet ? 1U : 0U);
    EXPECT_EQ(harness.running.identifiersAsked.size(), GetParam().applet ? 0U : 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AppletTest,
    testing::Values(AppletRow{"signature_alone", "aplt", "/A.app/Contents/MacOS/A", true},
                    AppletRow{"signature_without_executable", "aplt", {}, true},
                    AppletRow{"executable_alone", "????", "/A.app/Contents/MacOS/applet", true},
                    AppletRow{"executable_without_signature", {}, "/bin/applet", true},
                    AppletRow{"both", "aplt", "/A.app/Contents/MacOS/applet", true},
                    AppletRow{"signature_in_capitals", "APLT", "/A.app/Contents/MacOS/A", false},
                    AppletRow{"executable_with_a_capital", {}, "/bin/Applet", false},
                    AppletRow{"signature_with_a_space", "aplt ", {}, false},
                    AppletRow{"longer_executable", {}, "/bin/applet2", false},
                    AppletRow{"executable_in_a_folder_of_the_name", {}, "/applet/run", false},
                    AppletRow{"nothing_known", {}, {}, false}),
    [](const auto& row) { return std::string(row.param.name); });

// --- Asking the process finder -------------------------------------------------------------------

TEST_F(AppletRecovery, the_process_finder_is_run_with_exactly_two_arguments) {
    open();
    const std::vector<FakeChildProcess::Run> expected = {
        {"/usr/bin/pgrep", {"-f", "[V]elumo\\.py"}}};
    EXPECT_EQ(harness_.processes.runs, expected);
}

TEST_F(AppletRecovery, every_dot_of_a_name_is_escaped_and_the_first_letter_bracketed) {
    harness_.install({"A.B"});
    harness_.model().reload();
    harness_.workspace.bundles[ModelHarness::pathOf("A.B")] = {
        .identifier = {}, .signature = "aplt", .executablePath = {}};
    open("A.B");
    EXPECT_EQ(harness_.processes.runs[0].arguments, (Names{"-f", "[A]\\.B\\.py"}));
}

TEST_F(AppletRecovery, a_name_that_begins_with_a_metacharacter_gets_its_backslash_bracketed) {
    harness_.install({"(X)"});
    harness_.model().reload();
    harness_.workspace.bundles[ModelHarness::pathOf("(X)")] = {
        .identifier = {}, .signature = "aplt", .executablePath = {}};
    open("(X)");
    EXPECT_EQ(harness_.processes.runs[0].arguments, (Names{"-f", "[\\](X\\)\\.py"}));
}

struct OutputRow {
    const char* name;
    std::string output;
    std::int32_t found;  // a process id; 0 for none
};

class ProcessOutput : public AppletRecovery, public testing::WithParamInterface<OutputRow> {};

TEST_P(ProcessOutput, gives_the_first_interpreter_in_its_order) {
    SCOPED_TRACE(GetParam().name);
    run(123, "/usr/bin/vim");
    run(456, "/opt/Python");
    run(789, "/usr/bin/Python");
    run(11, "/usr/bin/python3");
    run(12, "/usr/bin/python");
    run(13, std::nullopt);
    run(14, "/opt/Python/bin/tool");
    run(15, "/opt/Python/");
    find(GetParam().output);
    open();
    EXPECT_EQ(harness_.workspace.openings.size(), GetParam().found == 0 ? 1U : 0U);
    if (GetParam().found == 0) {
        EXPECT_TRUE(activated().empty());
    } else {
        ASSERT_EQ(activated().size(), 1U);
        EXPECT_EQ(activated()[0].processIdentifier, GetParam().found);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ProcessOutput,
    testing::Values(
        OutputRow{"nothing", "", 0}, OutputRow{"empty_lines", "\n\n\n", 0},
        OutputRow{"another_program_an_empty_line_and_the_interpreter", "123\n\n456\n", 456},
        OutputRow{"two_interpreters", "789\n456\n", 789}, OutputRow{"no_line_end", "456", 456},
        OutputRow{"lower_case_with_a_version", "11\n", 0}, OutputRow{"lower_case", "12\n", 0},
        OutputRow{"a_process_without_executable", "13\n456\n", 456},
        OutputRow{"a_folder_of_that_name", "14\n", 0}, OutputRow{"a_trailing_slash", "15\n", 15},
        OutputRow{"no_such_process", "4711\n456\n", 456}, OutputRow{"a_plus_sign", "+456\n", 456},
        OutputRow{"words_and_spaces", "pid\n 456\n456 Python\n", 0},
        OutputRow{"a_number_too_large", "4294967752\n99999999999999999999\n", 0},
        OutputRow{"broken_bytes",
                  "\xff\xfe\n4\xff"
                  "56\n456\n",
                  456},
        OutputRow{"a_zero_byte",
                  std::string("45\0"
                              "6\n789\n",
                              9),
                  789},
        OutputRow{"a_carriage_return", "456\r\n", 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppletRecovery, a_hundred_thousand_lines_of_garbage_are_passed_over) {
    const RunningApplication python = run(456, "/opt/Python");
    std::string output;
    for (int i = 0; i < 100000; ++i) {
        output += "garbage\n";
    }
    find(output + "456\n");
    open();
    EXPECT_EQ(activated(), std::vector{python});
}

// --- Before and after the start ------------------------------------------------------------------

TEST_F(AppletRecovery, an_applet_whose_script_runs_is_brought_forward_and_not_opened) {
    const RunningApplication python = run(456, "/opt/Python");
    find("456\n");
    open();
    EXPECT_EQ(activated(), std::vector{python});
    EXPECT_TRUE(harness_.workspace.openings.empty());
    EXPECT_EQ(harness_.mainQueue.waiting(), 0U);  // no checks follow
    EXPECT_EQ(harness_.shownIn("recent"), Names{"Velumo"});
}

TEST_F(AppletRecovery, nothing_is_looked_for_until_the_workspace_has_answered) {
    open();
    harness_.mainQueue.advance(milliseconds(60000));
    EXPECT_EQ(checks(), 1U);  // the check before the start
    harness_.workspace.complete(0, std::nullopt, std::nullopt);
    EXPECT_EQ(checks(), 2U);
}

TEST_F(AppletRecovery, the_application_that_the_answer_names_is_ignored) {
    open();
    harness_.workspace.complete(0, RunningApplication{7, "org.example.Velumo"}, std::nullopt);
    EXPECT_EQ(checks(), 2U);
    EXPECT_TRUE(activated().empty());
}

TEST_F(AppletRecovery,
       an_interpreter_that_appears_after_three_seconds_is_fronted_at_the_next_check) {
    openAndAnswer();
    harness_.mainQueue.advance(milliseconds(2999));
    const RunningApplication python = run(456, "/opt/Python");
    find("456\n");
    EXPECT_TRUE(activated().empty());
    harness_.mainQueue.advance(milliseconds(1));
    EXPECT_EQ(activated(), std::vector{python});
    EXPECT_EQ(checks(), 1U + 13U);
    harness_.mainQueue.advance(milliseconds(60000));
    EXPECT_EQ(checks(), 1U + 13U);
    EXPECT_EQ(activated().size(), 1U);
    EXPECT_EQ(launchError(), "(none)");
}

TEST_F(AppletRecovery, an_interpreter_without_a_window_yet_is_checked_for_again) {
    openAndAnswer();
    find("456\n");  // its process runs, but is no application before it has a window
    harness_.mainQueue.advance(milliseconds(1000));
    EXPECT_TRUE(activated().empty());
    const RunningApplication python = run(456, "/opt/Python");
    harness_.mainQueue.advance(milliseconds(250));
    EXPECT_EQ(activated(), std::vector{python});
}

TEST_F(AppletRecovery, an_interpreter_that_never_appears_is_checked_for_41_times_and_then_told) {
    openAndAnswer();
    EXPECT_EQ(checks(), 1U + 1U);
    for (std::size_t again = 1; again <= 40; ++again) {
        harness_.mainQueue.advance(milliseconds(249));
        EXPECT_EQ(checks(), 1U + again);
        EXPECT_EQ(launchError(), "(none)");
        harness_.mainQueue.advance(milliseconds(1));
        EXPECT_EQ(checks(), 1U + 1U + again);
    }
    EXPECT_EQ(harness_.mainQueue.now(), milliseconds(10000));
    EXPECT_EQ(launchError(), kMessage);
    harness_.mainQueue.advance(milliseconds(60000));
    EXPECT_EQ(checks(), 1U + 41U);
    EXPECT_EQ(harness_.mainQueue.waiting(), 0U);
}

TEST_F(AppletRecovery, one_found_at_the_last_check_is_fronted_without_a_message) {
    openAndAnswer();
    harness_.mainQueue.advance(milliseconds(9999));
    const RunningApplication python = run(456, "/opt/Python");
    find("456\n");
    harness_.mainQueue.advance(milliseconds(1));
    EXPECT_EQ(activated(), std::vector{python});
    EXPECT_EQ(launchError(), "(none)");
}

TEST_F(AppletRecovery, the_message_names_velumo_whichever_applet_was_opened) {
    open("Nebula");
    harness_.workspace.complete(0, std::nullopt, std::nullopt);
    harness_.mainQueue.advance(milliseconds(10000));
    EXPECT_EQ(harness_.processes.runs.back().arguments, (Names{"-f", "[N]ebula\\.py"}));
    EXPECT_EQ(launchError(), kMessage);
}

TEST_F(AppletRecovery, a_process_finder_that_gives_no_answer_counts_as_not_running) {
    harness_.processes.answerAnything(std::nullopt);
    openAndAnswer();
    harness_.mainQueue.advance(milliseconds(10000));
    EXPECT_EQ(checks(), 1U + 41U);
    EXPECT_EQ(launchError(), kMessage);
}

// --- Errors --------------------------------------------------------------------------------------

TEST_F(AppletRecovery, the_check_comes_before_the_error_is_told) {
    open();
    std::vector<std::size_t> checksBefore;
    const auto watch =
        harness_.model().objectWillChange.subscribe([&] { checksBefore.push_back(checks()); });
    harness_.workspace.complete(0, std::nullopt, Error{"broken"});
    EXPECT_EQ(checksBefore, std::vector<std::size_t>{2});
    EXPECT_EQ(launchError(), "broken");
}

TEST_F(AppletRecovery, an_error_is_told_and_ten_seconds_later_replaced_by_the_message) {
    openAndAnswer(Error{"broken"});
    EXPECT_EQ(launchError(), "broken");
    harness_.mainQueue.advance(milliseconds(9999));
    EXPECT_EQ(launchError(), "broken");
    harness_.mainQueue.advance(milliseconds(1));
    EXPECT_EQ(launchError(), kMessage);
}

TEST_F(AppletRecovery, after_an_error_a_script_that_appears_is_fronted_and_the_error_stays) {
    openAndAnswer(Error{"broken"});
    const RunningApplication python = run(456, "/opt/Python");
    find("456\n");
    harness_.mainQueue.advance(milliseconds(60000));
    EXPECT_EQ(activated(), std::vector{python});
    EXPECT_EQ(launchError(), "broken");
}

TEST_F(AppletRecovery, the_message_comes_again_after_the_user_closed_an_earlier_one) {
    openAndAnswer();
    harness_.mainQueue.advance(milliseconds(10000));
    harness_.model().clearLaunchError();
    openAndAnswer();
    harness_.mainQueue.advance(milliseconds(10000));
    EXPECT_EQ(launchError(), kMessage);
}

// --- Several at once, and the end ----------------------------------------------------------------

TEST_F(AppletRecovery, opening_twice_starts_two_independent_chains) {
    openAndAnswer();
    harness_.mainQueue.advance(milliseconds(100));
    openAndAnswer();
    EXPECT_EQ(harness_.workspace.openings.size(), 2U);
    EXPECT_EQ(harness_.mainQueue.waiting(), 2U);
    harness_.mainQueue.advance(milliseconds(9900));
    EXPECT_EQ(launchError(), kMessage);
    EXPECT_EQ(harness_.mainQueue.waiting(), 1U);
    harness_.model().clearLaunchError();
    harness_.mainQueue.advance(milliseconds(100));
    EXPECT_EQ(launchError(), kMessage);
    EXPECT_EQ(harness_.mainQueue.waiting(), 0U);
    EXPECT_EQ(checks(), 2U * (1U + 41U));
}

TEST_F(AppletRecovery, each_of_two_chains_fronts_the_script_that_it_finds) {
    openAndAnswer();
    openAndAnswer();
    const RunningApplication python = run(456, "/opt/Python");
    find("456\n");
    harness_.mainQueue.advance(milliseconds(250));
    EXPECT_EQ(activated(), (std::vector{python, python}));
    EXPECT_EQ(harness_.mainQueue.waiting(), 0U);
}

TEST_F(AppletRecovery, a_chain_ends_silently_once_the_model_is_gone) {
    openAndAnswer();
    harness_.mainQueue.advance(milliseconds(1000));
    const std::size_t before = checks();
    run(456, "/opt/Python");
    find("456\n");
    harness_.announcements = 0;
    harness_.dropModel();
    harness_.mainQueue.advance(milliseconds(60000));
    EXPECT_EQ(checks(), before);
    EXPECT_TRUE(activated().empty());
    EXPECT_EQ(harness_.announcements, 0);
    EXPECT_EQ(harness_.mainQueue.waiting(), 0U);
}

TEST_F(AppletRecovery, an_answer_after_the_model_is_gone_starts_no_chain) {
    open();
    harness_.dropModel();
    harness_.announcements = 0;
    harness_.workspace.complete(0, std::nullopt, Error{"late"});
    harness_.mainQueue.advance(milliseconds(60000));
    EXPECT_EQ(checks(), 1U);
    EXPECT_EQ(harness_.announcements, 0);
}

}  // namespace
}  // namespace tavo
