// What every workspace promises.
//
// A rig has: Workspace& workspace(); void end(), which ends the workspace; std::string
// bundle(identifier, signature), the path of a bundle without a program, which states those of the
// two that are given; std::string startable(), broken() and nowhere(), the paths of an application
// that starts, of one that does not, and of nothing; void deliver(answered), after which the
// completion of the last opening has been called, as `answered` then says.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/Workspace.h"

namespace tavo {

template<typename Rig>
class WorkspaceContract : public testing::Test {
protected:
    struct Outcome {
        int calls = 0;
        std::thread::id thread;
        std::optional<RunningApplication> running;
        std::optional<Error> error;
    };

    // Opens what lies at `path` and waits for the answer.
    std::shared_ptr<Outcome> open(const std::string& path) {
        const auto outcome = std::make_shared<Outcome>();
        rig_.workspace().openApplication(
            path, {},
            [outcome](std::optional<RunningApplication> running, std::optional<Error> error) {
                outcome->running = std::move(running);
                outcome->error = std::move(error);
                outcome->thread = std::this_thread::get_id();
                ++outcome->calls;
            });
        EXPECT_EQ(outcome->calls, 0);
        rig_.deliver([outcome] { return outcome->calls > 0; });
        return outcome;
    }

    Rig rig_;
};

TYPED_TEST_SUITE_P(WorkspaceContract);

TYPED_TEST_P(WorkspaceContract, nothing_has_no_facts) {
    EXPECT_EQ(this->rig_.workspace().bundle(this->rig_.nowhere()), std::nullopt);
}

TYPED_TEST_P(WorkspaceContract, a_bundle_tells_identifier_and_signature) {
    const std::string path = this->rig_.bundle("org.example.Bundle", "aplt");
    const auto facts = this->rig_.workspace().bundle(path);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->identifier, "org.example.Bundle");
    EXPECT_EQ(facts->signature, "aplt");
}

TYPED_TEST_P(WorkspaceContract, what_a_bundle_does_not_say_is_absent) {
    const auto facts = this->rig_.workspace().bundle(this->rig_.bundle({}, {}));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->identifier, std::nullopt);
    EXPECT_EQ(facts->signature, std::nullopt);
    EXPECT_EQ(facts->executablePath, std::nullopt);
}

TYPED_TEST_P(WorkspaceContract, opening_what_starts_is_answered_once_and_without_error) {
    const auto outcome = this->open(this->rig_.startable());
    this->rig_.end();
    EXPECT_EQ(outcome->calls, 1);
    EXPECT_EQ(outcome->error, std::nullopt);
}

TYPED_TEST_P(WorkspaceContract, opening_what_does_not_start_is_answered_once_with_a_text) {
    const auto outcome = this->open(this->rig_.broken());
    this->rig_.end();
    EXPECT_EQ(outcome->calls, 1);
    EXPECT_EQ(outcome->running, std::nullopt);
    ASSERT_TRUE(outcome->error);
    EXPECT_FALSE(outcome->error->message.empty());
}

TYPED_TEST_P(WorkspaceContract, opening_nothing_is_answered_with_a_text) {
    const auto outcome = this->open(this->rig_.nowhere());
    ASSERT_TRUE(outcome->error);
    EXPECT_FALSE(outcome->error->message.empty());
}

TYPED_TEST_P(WorkspaceContract, every_answer_comes_on_the_main_thread) {
    for (const std::string& path : {this->rig_.startable(), this->rig_.broken()}) {
        EXPECT_EQ(this->open(path)->thread, std::this_thread::get_id());
    }
}

TYPED_TEST_P(WorkspaceContract, openings_are_independent_of_each_other) {
    const auto bad = this->open(this->rig_.broken());
    const auto good = this->open(this->rig_.startable());
    EXPECT_TRUE(bad->error);
    EXPECT_FALSE(good->error);
}

REGISTER_TYPED_TEST_SUITE_P(WorkspaceContract, nothing_has_no_facts,
                            a_bundle_tells_identifier_and_signature,
                            what_a_bundle_does_not_say_is_absent,
                            opening_what_starts_is_answered_once_and_without_error,
                            opening_what_does_not_start_is_answered_once_with_a_text,
                            opening_nothing_is_answered_with_a_text,
                            every_answer_comes_on_the_main_thread,
                            openings_are_independent_of_each_other);

}  // namespace tavo
