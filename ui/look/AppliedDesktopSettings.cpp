#include "ui/look/AppliedDesktopSettings.h"

#include <QApplication>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "ui/look/Appearance.h"
#include "ui/look/Motion.h"
#include "ui/look/TextScale.h"

namespace tavo {
namespace {

constexpr std::chrono::milliseconds kPatience{8};

}  // namespace

AppliedDesktopSettings::AppliedDesktopSettings(DesktopSettings& settings, DesktopSettingUses uses)
    : settings_(settings),
      uses_(std::move(uses)),
      qtsFont_(QApplication::font()),
      qtsDoubleClickTime_(QApplication::doubleClickInterval()),
      qtsWheelLines_(QApplication::wheelScrollLines()),
      changes_(settings.changed.subscribe([this] { follow(); })) {
    const auto followScreen = [this](const QScreen* screen) {
        QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, &screens_,
                         [this] { useTextScale(); });
    };
    for (const QScreen* const screen : QGuiApplication::screens()) {
        followScreen(screen);
    }
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &screens_,
                     [this, followScreen](const QScreen* screen) {
                         followScreen(screen);
                         useTextScale();
                     });
    follow();
}

AppliedDesktopSettings::~AppliedDesktopSettings() {
    apply({});
}

void AppliedDesktopSettings::awaitDesktop() {
    settings_.awaitFirstAnswer(kPatience);
    follow();
}

void AppliedDesktopSettings::follow() {
    apply(settings_.preferences());
}

void AppliedDesktopSettings::apply(const DesktopPreferences& preferences) {
    const DesktopPreferences before = std::exchange(shown_, preferences);
    const auto differs = [&](auto DesktopPreferences::*member) {
        return shown_.*member != before.*member;
    };
    if (differs(&DesktopPreferences::colorScheme) || differs(&DesktopPreferences::accent) ||
        differs(&DesktopPreferences::moreContrast)) {
        setMoreContrast(shown_.moreContrast);
        usePalette();
    }
    if (differs(&DesktopPreferences::fontFamilies)) {
        useFont();
    }
    useTextScale();
    if (differs(&DesktopPreferences::doubleClickTime)) {
        QApplication::setDoubleClickInterval(shown_.doubleClickTime
                                                 ? static_cast<int>(shown_.doubleClickTime->count())
                                                 : qtsDoubleClickTime_);
    }
    if (differs(&DesktopPreferences::wheelLines)) {
        QApplication::setWheelScrollLines(shown_.wheelLines.value_or(qtsWheelLines_));
    }
    setReducedMotion(shown_.reducedMotion);
    const auto use = [&](const auto& function, auto DesktopPreferences::*member) {
        if (function && differs(member)) {
            function(shown_.*member);
        }
    };
    use(uses_.iconTheme, &DesktopPreferences::iconTheme);
    use(uses_.doubleClickDistance, &DesktopPreferences::doubleClickDistance);
    use(uses_.cursorBlinkTime, &DesktopPreferences::cursorBlinkTime);
}

void AppliedDesktopSettings::usePalette() {
    QPalette palette;  // Qt's own wherever no colour is set here
    if (shown_.colorScheme != ColorScheme::NoPreference || shown_.moreContrast) {
        palette = paletteOfLook(shown_.colorScheme == ColorScheme::Dark);
    }
    if (shown_.accent) {
        palette.setColor(QPalette::Highlight, QColor::fromRgb(*shown_.accent));
    }
    QApplication::setPalette(palette);
}

// Of a number that is for screens and text together, Qt has taken the scale of the screens, which
// may be all of it.
void AppliedDesktopSettings::useTextScale() {
    const double beyondScreens =
        shown_.screenAndTextScale.value_or(1) / std::max(1.0, qGuiApp->devicePixelRatio());
    setTextScale(shown_.textScale.value_or(1) * std::max(1.0, beyondScreens));
}

void AppliedDesktopSettings::useFont() {
    QFont font = qtsFont_;
    if (!shown_.fontFamilies.empty()) {
        QStringList families =
            QString::fromStdString(shown_.fontFamilies).split(u',', Qt::SkipEmptyParts);
        for (QString& family : families) {
            family = family.trimmed();
        }
        font.setFamilies(families + qtsFont_.families());
    }
    QApplication::setFont(font);
}

}  // namespace tavo
