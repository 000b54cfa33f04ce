#include "platform/qt/PlatformTheme.h"

#include <QVariant>
#include <QtPlugin>

#include <qpa/qplatformtheme.h>
#include <qpa/qplatformthemeplugin.h>

Q_IMPORT_PLUGIN(PlatformThemePlugin)

namespace tavo {
namespace {

std::optional<int> doubleClickDistance;

// Unlike the themes of desktops it offers no dialogs, no menus and no status item.
class PlatformTheme final : public QPlatformTheme {
public:
    QVariant themeHint(ThemeHint hint) const override {
        if (hint == KeyboardScheme) {
            return X11KeyboardScheme;
        }
        if (hint == MouseDoubleClickDistance && doubleClickDistance) {
            return *doubleClickDistance;
        }
        return QPlatformTheme::themeHint(hint);
    }
};

}  // namespace

// Linked into the program, and found by Qt like the plug-ins that are files.
class PlatformThemePlugin final : public QPlatformThemePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QPlatformThemeFactoryInterface_iid FILE "PlatformTheme.json")

public:
    QPlatformTheme* create(const QString& /*key*/, const QStringList& /*parameters*/) override {
        return new PlatformTheme;
    }
};

PlatformThemeArguments::PlatformThemeArguments(char* program)
    : option_{"-platformtheme"}, theme_{"tavo"}, values_{program, option_.data(), theme_.data()} {}

void setDoubleClickDistance(std::optional<int> pixels) {
    doubleClickDistance = pixels;
}

}  // namespace tavo

#include <PlatformTheme.moc>
