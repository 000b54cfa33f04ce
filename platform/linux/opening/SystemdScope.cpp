#include "platform/linux/opening/SystemdScope.h"

#include <atomic>
#include <cstdio>
#include <string_view>

#include "platform/linux/entries/DesktopFileId.h"

namespace tavo {
namespace {

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '.' || c == ':';
}

std::string escaped(std::string_view text) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        if (isPlain(c)) {
            result += c;
        } else {
            const auto code = static_cast<unsigned char>(c);
            result += {'\\', 'x', kDigits[code >> 4U], kDigits[code & 15U]};
        }
    }
    return result;
}

GVariant* scopeParameters(const std::string& identifier, pid_t process) {
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE("a(sv)"));
    const auto pid = static_cast<guint32>(process);
    g_variant_builder_add(&properties, "(sv)", "PIDs",
                          g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, &pid, 1, sizeof pid));
    g_variant_builder_add(&properties, "(sv)", "Slice", g_variant_new_string("app.slice"));
    // systemd removes the scope after its last process has ended, even if that failed.
    g_variant_builder_add(&properties, "(sv)", "CollectMode",
                          g_variant_new_string("inactive-or-failed"));
    return g_variant_new("(ssa(sv)a(sa(sv)))", scopeName(identifier, process).c_str(), "fail",
                         &properties, nullptr);
}

void reportOnce(const char* reason) {
    static std::atomic_flag reported;
    if (!reported.test_and_set()) {
        std::fprintf(stderr,
                     "tavolauncher: systemd gave a started program no scope of its own (%s)\n",
                     reason);
    }
}

void sayRefusal(const GError* error) {
    const bool absent =
        g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE ||
        g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) != FALSE;
    if (!absent) {
        reportOnce(error->message);
    }
}

}  // namespace

std::string scopeName(const std::string& identifier, pid_t process) {
    return "app-tavolauncher-" + escaped(withoutEntrySuffix(identifier)) + '-' +
           std::to_string(process) + ".scope";
}

void moveToScope(OpeningThread& thread, const std::string& identifier, pid_t process) {
    thread.calls().call(thread.connection(),
                        {"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                         "org.freedesktop.systemd1.Manager", "StartTransientUnit"},
                        scopeParameters(identifier, process), "(o)",
                        [](const Variant&, GError* error) {
                            if (error != nullptr) {
                                sayRefusal(error);
                            }
                        });
}

}  // namespace tavo
