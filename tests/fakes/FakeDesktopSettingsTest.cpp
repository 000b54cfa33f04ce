#include <optional>

#include <gtest/gtest.h>

#include "tests/contracts/DesktopSettingsContract.h"
#include "tests/fakes/FakeDesktopSettings.h"

namespace tavo {
namespace {

class FakeWorld {
public:
    void choose(const DesktopPreferences& preferences) { settings_.choose(preferences); }
    DesktopSettings& settings() { return settings_; }
    bool eventually(const std::function<bool()>& condition) { return condition(); }

private:
    FakeDesktopSettings settings_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, DesktopSettingsContract, FakeWorld);

TEST(FakeDesktopSettings, answers_late_when_told_to) {
    FakeDesktopSettings settings;
    const DesktopPreferences chosen = {ColorScheme::Dark, false, ""};
    settings.answerLate(chosen);
    EXPECT_EQ(settings.preferences(), DesktopPreferences());
    settings.awaitFirstAnswer(std::chrono::milliseconds(1));
    EXPECT_EQ(settings.preferences(), chosen);
    EXPECT_EQ(settings.waits, 1);
}

}  // namespace
}  // namespace tavo
