#include "platform/linux/compositors/GnomeShellWindows.h"

#include <charconv>
#include <utility>

namespace tavo {
namespace {

constexpr char kName[] = "org.tavolauncher.GnomeShell";
constexpr char kPath[] = "/org/tavolauncher/GnomeShell";
constexpr BusMethod kList = {kName, kPath, kName, "ListWindows"};
constexpr BusMethod kActivate = {kName, kPath, kName, "ActivateWindows"};

BusWindows describe(GVariant* reply) {
    BusWindows windows{.windows = {}, .knowsActive = true};
    GVariantIter* all = nullptr;
    g_variant_get(reply, "(a(tsssbb))", &all);
    guint64 id = 0;
    const char* instance = nullptr;
    const char* className = nullptr;
    const char* appId = nullptr;
    gboolean minimised = FALSE;
    gboolean active = FALSE;
    while (windows.windows.size() < kMostBusWindows &&
           g_variant_iter_next(all, "(t&s&s&sbb)", &id, &instance, &className, &appId, &minimised,
                               &active) != FALSE) {
        BusWindow& window = windows.windows.emplace_back();
        window.id = std::to_string(id);
        window.names = {instance, className, appId};
        window.minimised = minimised != FALSE;
        window.active = active != FALSE;
    }
    g_variant_iter_free(all);
    return windows;
}

class GnomeShellWindows final : public BusWindowLister {
public:
    void list(GDBusConnection* bus, BusCalls& calls, Answered answered) override {
        calls.call(bus, kList, nullptr, "(a(tsssbb))",
                   [answered = std::move(answered)](const Variant& reply, GError* /*error*/) {
                       answered(reply ? std::optional(describe(reply.get())) : std::nullopt);
                   });
    }

    void front(GDBusConnection* bus, BusCalls& calls,
               const std::vector<std::string>& ids) override {
        GVariantBuilder builder;
        g_variant_builder_init(&builder, G_VARIANT_TYPE("at"));
        for (const std::string& id : ids) {
            guint64 number = 0;
            std::from_chars(id.data(), id.data() + id.size(), number);
            g_variant_builder_add(&builder, "t", number);
        }
        calls.call(bus, kActivate, g_variant_new("(at)", &builder), nullptr,
                   [](const Variant& /*reply*/, GError* /*error*/) {});
    }
};

}  // namespace

std::unique_ptr<BusWindowLister> makeGnomeShellWindows() {
    return std::make_unique<GnomeShellWindows>();
}

}  // namespace tavo
