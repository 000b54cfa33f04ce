#include "platform/linux/opening/UrlAssociation.h"

#include <gio/gdesktopappinfo.h>

#include "platform/linux/dbus/GLibPointers.h"

namespace tavo {

std::string applicationForAddress(const std::string& address) {
    const std::string scheme = address.substr(0, address.find(':'));
    const GObjectPointer<GAppInfo> program(g_app_info_get_default_for_uri_scheme(scheme.c_str()));
    const bool isEntry = program != nullptr && G_IS_DESKTOP_APP_INFO(program.get());
    const char* const path =
        isEntry ? g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(program.get())) : nullptr;
    return path != nullptr ? path : "";
}

}  // namespace tavo
