#include "platform/linux/opening/UrlOpener.h"

#include <memory>

#include <unistd.h>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/dbus/GLibPointers.h"
#include "platform/linux/opening/ApplicationFile.h"
#include "platform/linux/opening/ExecKey.h"

namespace tavo {
namespace {

void leaveSession(gpointer /*data*/) {
    ::setsid();
}

// The file of the entry that is associated with the scheme of `address`; empty when there is none.
std::string associatedEntry(const std::string& address) {
    const std::string scheme = address.substr(0, address.find(':'));
    const GObjectPointer<GAppInfo> program(g_app_info_get_default_for_uri_scheme(scheme.c_str()));
    const bool isEntry = program != nullptr && G_IS_DESKTOP_APP_INFO(program.get());
    const char* const path =
        isEntry ? g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(program.get())) : nullptr;
    return path != nullptr ? path : "";
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace

bool openLink(const std::string& address, const std::vector<std::string>& environment) {
    const std::string path = associatedEntry(address);
    const Result<ApplicationFile> file = readApplicationFile(path, {});
    if (!file) {
        return false;
    }
    std::vector<std::string> words = commandWords(file.value().entry, path, address);
    std::vector<std::string> variables = environment;
    // GLib starts it as a grandchild, which needs no reaping.
    return !words.empty() &&
           g_spawn_async(nullptr, pointers(words).data(), pointers(variables).data(),
                         G_SPAWN_SEARCH_PATH_FROM_ENVP, leaveSession, nullptr, nullptr,
                         nullptr) != FALSE;
}

}  // namespace tavo
