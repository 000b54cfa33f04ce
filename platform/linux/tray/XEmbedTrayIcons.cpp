#include "platform/linux/tray/XEmbedTrayIcons.h"

#include <utility>

#include <private/qguiapplication_p.h>
#include <qpa/qplatformtheme.h>

namespace tavo {

// What items panels can draw the toolkit asks its platform theme; the plain one knows of none.
void withXEmbedTrayIcons(const std::function<void()>& make) {
    QPlatformTheme plain;
    QPlatformTheme* const usual = std::exchange(QGuiApplicationPrivate::platform_theme, &plain);
    make();
    QGuiApplicationPrivate::platform_theme = usual;
}

}  // namespace tavo
