// The desktop's settings as a test chooses them.
#pragma once

#include <utility>

#include "platform/DesktopSettings.h"

namespace tavo {

class FakeDesktopSettings final : public DesktopSettings {
public:
    explicit FakeDesktopSettings(DesktopPreferences chosen = {}) : chosen_(std::move(chosen)) {
        known_ = chosen_;
    }

    DesktopPreferences preferences() const override { return known_; }

    void awaitFirstAnswer(std::chrono::milliseconds /*patience*/) override {
        ++waits;
        known_ = chosen_;
    }

    // The user chooses these, and the program hears of it at once.
    void choose(const DesktopPreferences& preferences) {
        chosen_ = preferences;
        if (std::exchange(known_, chosen_) != chosen_) {
            changed.emit();
        }
    }

    // The user has chosen these, but the program hears of it only in awaitFirstAnswer().
    void answerLate(const DesktopPreferences& preferences) {
        chosen_ = preferences;
        known_ = {};
    }

    int waits = 0;

private:
    DesktopPreferences chosen_;
    DesktopPreferences known_;
};

}  // namespace tavo
