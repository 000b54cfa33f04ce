// A platform theme as desktops install them, under the names that Qt asks for. Tests look whether
// its file is loaded.
#include <qpa/qplatformtheme.h>
#include <qpa/qplatformthemeplugin.h>

namespace tavo {

class ForeignThemePlugin final : public QPlatformThemePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QPlatformThemeFactoryInterface_iid FILE "ForeignTheme.json")

public:
    QPlatformTheme* create(const QString& /*key*/, const QStringList& /*parameters*/) override {
        return new QPlatformTheme;
    }
};

}  // namespace tavo

#include <ForeignTheme.moc>
