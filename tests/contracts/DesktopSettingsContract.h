// What every source of the desktop's settings promises, as one suite over any of them.
//
// A World is one desktop, on which the user has chosen nothing at first:
//   void choose(const DesktopPreferences&);         the user chooses colours (of accents 0xff0000
//   or
//                                                   none), motion, icon theme and font, defaults
//                                                   included
//   DesktopSettings& settings();                    the settings under test, made by the first call
//   bool eventually(const std::function<bool()>&);  runs the main queue until the condition holds;
//                                                   false if it never does
//
// INSTANTIATE_TYPED_TEST_SUITE_P(Name, DesktopSettingsContract, World);
#pragma once

#include <chrono>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "platform/DesktopSettings.h"

namespace tavo {

template<typename World>
class DesktopSettingsContract : public testing::Test {
protected:
    static constexpr std::chrono::seconds kPatience{60};

    bool becomes(const DesktopPreferences& wanted) {
        return world_.eventually([&] { return world_.settings().preferences() == wanted; });
    }

    World world_;
};

TYPED_TEST_SUITE_P(DesktopSettingsContract);

TYPED_TEST_P(DesktopSettingsContract, a_desktop_on_which_nothing_was_chosen_has_the_defaults) {
    DesktopSettings& settings = this->world_.settings();
    settings.awaitFirstAnswer(this->kPatience);
    EXPECT_EQ(settings.preferences(), DesktopPreferences());
}

TYPED_TEST_P(DesktopSettingsContract, what_was_chosen_before_is_known_after_the_first_answer) {
    const DesktopPreferences chosen = {ColorScheme::Dark, true, "Papirus", 0xff0000, "Noto Sans"};
    this->world_.choose(chosen);
    DesktopSettings& settings = this->world_.settings();
    settings.awaitFirstAnswer(this->kPatience);
    EXPECT_EQ(settings.preferences(), chosen);
}

TYPED_TEST_P(DesktopSettingsContract, what_is_chosen_later_becomes_known_and_is_announced) {
    DesktopSettings& settings = this->world_.settings();
    settings.awaitFirstAnswer(this->kPatience);
    DesktopPreferences announced;
    const std::thread::id mainThread = std::this_thread::get_id();
    const Subscription subscription = settings.changed.subscribe([&] {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        announced = settings.preferences();
    });
    const DesktopPreferences choices[] = {
        {ColorScheme::Light, false, "Adwaita"},
        {ColorScheme::Dark, false, "Adwaita"},
        {ColorScheme::Dark, true, "Adwaita"},
        {ColorScheme::Dark, true, "breeze"},
        {ColorScheme::Dark, true, "breeze", 0xff0000},
        {ColorScheme::Dark, true, "breeze", {}, "Cantarell"},
        {},
    };
    for (const DesktopPreferences& chosen : choices) {
        this->world_.choose(chosen);
        EXPECT_TRUE(this->becomes(chosen));
        EXPECT_TRUE(this->world_.eventually([&] { return announced == chosen; }));
    }
}

TYPED_TEST_P(DesktopSettingsContract, what_stays_as_it_was_is_not_announced) {
    this->world_.choose({ColorScheme::Dark, false, "Papirus"});
    DesktopSettings& settings = this->world_.settings();
    settings.awaitFirstAnswer(this->kPatience);
    std::vector<ColorScheme> announced;
    const Subscription subscription = settings.changed.subscribe(
        [&] { announced.push_back(settings.preferences().colorScheme); });
    this->world_.choose({ColorScheme::Dark, false, "Papirus"});
    this->world_.choose({ColorScheme::Light, false, "Papirus"});
    EXPECT_TRUE(this->world_.eventually(
        [&] { return !announced.empty() && announced.back() == ColorScheme::Light; }));
    // Light is announced once. The first answer may have been announced before it.
    EXPECT_LE(announced.size(), 2U);
}

REGISTER_TYPED_TEST_SUITE_P(DesktopSettingsContract,
                            a_desktop_on_which_nothing_was_chosen_has_the_defaults,
                            what_was_chosen_before_is_known_after_the_first_answer,
                            what_is_chosen_later_becomes_known_and_is_announced,
                            what_stays_as_it_was_is_not_announced);

}  // namespace tavo
