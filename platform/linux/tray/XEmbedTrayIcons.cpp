#include "platform/linux/tray/XEmbedTrayIcons.h"

#include <utility>

#include <private/qguiapplication_p.h>
#include <qpa/qplatformtheme.h>

namespace tavo {

// Qt asks its platform theme for a StatusNotifierItem. A plain QPlatformTheme offers none.
void withXEmbedTrayIcons(const std::function<void()>& make) {
    QPlatformTheme plain;
    QPlatformTheme* const usual = std::exchange(QGuiApplicationPrivate::platform_theme, &plain);
    make();
    QGuiApplicationPrivate::platform_theme = usual;
}

}  // namespace tavo
