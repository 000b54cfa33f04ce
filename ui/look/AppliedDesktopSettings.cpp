#include "ui/look/AppliedDesktopSettings.h"

#include <QApplication>
#include <utility>

#include "ui/look/Appearance.h"
#include "ui/look/Motion.h"

namespace tavo {
namespace {

constexpr std::chrono::milliseconds kPatience{8};

void useScheme(ColorScheme scheme) {
    QApplication::setPalette(scheme == ColorScheme::NoPreference
                                 ? QPalette()
                                 : paletteOfLook(scheme == ColorScheme::Dark));
}

}  // namespace

AppliedDesktopSettings::AppliedDesktopSettings(DesktopSettings& settings, UseIconTheme useIconTheme)
    : settings_(settings),
      useIconTheme_(std::move(useIconTheme)),
      changes_(settings.changed.subscribe([this] { follow(); })) {
    follow();
}

AppliedDesktopSettings::~AppliedDesktopSettings() {
    useScheme(ColorScheme::NoPreference);
    setReducedMotion(false);
}

void AppliedDesktopSettings::awaitDesktop() {
    settings_.awaitFirstAnswer(kPatience);
    follow();
}

void AppliedDesktopSettings::follow() {
    const DesktopPreferences before = std::exchange(shown_, settings_.preferences());
    if (shown_.colorScheme != before.colorScheme) {
        useScheme(shown_.colorScheme);
    }
    setReducedMotion(shown_.reducedMotion);
    if (shown_.iconTheme != before.iconTheme && useIconTheme_) {
        useIconTheme_(shown_.iconTheme);
    }
}

}  // namespace tavo
