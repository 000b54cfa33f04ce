// What every child process adapter promises.
//
// A rig has: ChildProcess& processes(); void expect(executable, arguments, output), which tells a
// fake what the real program does.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ChildProcess.h"

namespace tavo {

template<typename Rig>
class ChildProcessContract : public testing::Test {
protected:
    // Runs a shell script. `outcome` is what the real shell is known to answer, for a fake to
    // answer it.
    std::optional<std::string> shell(const std::string& script,
                                     const std::optional<std::string>& outcome) {
        rig_.expect("/bin/sh", {"-c", script}, outcome);
        return rig_.processes().output("/bin/sh", {"-c", script});
    }

    Rig rig_;
};

TYPED_TEST_SUITE_P(ChildProcessContract);

TYPED_TEST_P(ChildProcessContract, the_whole_output_is_the_answer) {
    EXPECT_EQ(this->shell("printf '12\\n34\\n'", "12\n34\n"), "12\n34\n");
}

TYPED_TEST_P(ChildProcessContract, no_output_is_an_answer_too) {
    EXPECT_EQ(this->shell(":", ""), "");
}

TYPED_TEST_P(ChildProcessContract, the_exit_status_is_not_looked_at) {
    EXPECT_EQ(this->shell("echo 1; exit 7", "1\n"), "1\n");
}

TYPED_TEST_P(ChildProcessContract, bytes_are_handed_on_as_they_are) {
    const std::string bytes("a\0\377b", 4);
    EXPECT_EQ(this->shell("printf 'a\\000\\377b'", bytes), bytes);
}

TYPED_TEST_P(ChildProcessContract, a_program_that_is_not_there_gives_no_answer) {
    this->rig_.expect("/nonexistent/program", {}, std::nullopt);
    EXPECT_EQ(this->rig_.processes().output("/nonexistent/program", {}), std::nullopt);
}

TYPED_TEST_P(ChildProcessContract, arguments_arrive_one_by_one_and_unchanged) {
    const std::vector<std::string> arguments = {
        "-c", "printf '[%s]' \"$@\"", "sh", "[V]elumo\\.py", "", "a b", "$HOME;ls"};
    const std::string outcome = "[[V]elumo\\.py][][a b][$HOME;ls]";
    this->rig_.expect("/bin/sh", arguments, outcome);
    EXPECT_EQ(this->rig_.processes().output("/bin/sh", arguments), outcome);
}

REGISTER_TYPED_TEST_SUITE_P(ChildProcessContract, the_whole_output_is_the_answer,
                            no_output_is_an_answer_too, the_exit_status_is_not_looked_at,
                            bytes_are_handed_on_as_they_are,
                            a_program_that_is_not_there_gives_no_answer,
                            arguments_arrive_one_by_one_and_unchanged);

}  // namespace tavo
