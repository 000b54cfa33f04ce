#include "platform/linux/opening/UrlOpener.h"

#include <memory>

#include <unistd.h>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/opening/GioLaunchContext.h"

namespace tavo {
namespace {

void leaveSession(gpointer /*data*/) {
    ::setsid();
}

}  // namespace

bool openLink(const std::string& address, const std::vector<std::string>& environment) {
    const std::string scheme = address.substr(0, address.find(':'));
    const std::unique_ptr<GAppInfo, UnrefObject> program(
        g_app_info_get_default_for_uri_scheme(scheme.c_str()));
    if (program == nullptr || !G_IS_DESKTOP_APP_INFO(program.get())) {
        return false;
    }
    const LaunchContext context = makeLaunchContext(environment);
    GList addresses = {const_cast<char*>(address.c_str()), nullptr, nullptr};
    return g_desktop_app_info_launch_uris_as_manager(
               G_DESKTOP_APP_INFO(program.get()), &addresses, context.get(), G_SPAWN_SEARCH_PATH,
               leaveSession, nullptr, nullptr, nullptr, nullptr) != FALSE;
}

}  // namespace tavo
