// Prints the path and the localized Name of each entry that GIO would show in this environment,
// each followed by a NUL. A program of its own, because GIO reads the environment once in a
// process.
#include <cstdio>
#include <cstring>

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

int main() {
    GList* const all = g_app_info_get_all();
    bool isAsExpected = true;
    for (const GList* link = all; link != nullptr; link = link->next) {
        GAppInfo* const info = G_APP_INFO(link->data);
        GDesktopAppInfo* const entry = G_DESKTOP_APP_INFO(info);
        // Reads Name itself: GIO calls an entry without a Name "Unnamed", and the launcher does not
        // list it.
        char* const name = g_desktop_app_info_get_locale_string(entry, "Name");
        if (name != nullptr && g_app_info_should_show(info) != FALSE) {
            isAsExpected = isAsExpected && std::strcmp(name, g_app_info_get_name(info)) == 0;
            std::printf("%s%c%s%c", g_desktop_app_info_get_filename(entry), '\0', name, '\0');
        }
        g_free(name);
    }
    g_list_free_full(all, g_object_unref);
    return isAsExpected ? 0 : 1;
}
