#include "platform/linux/GioLaunchContext.h"

#include <map>
#include <string_view>

#include <unistd.h>

namespace tavo {
namespace {

// GAppLaunchContext answers a start's identifier by a virtual function.
struct Context {
    GAppLaunchContext parent;
    char* startupId;
};

struct ContextClass {
    GAppLaunchContextClass parent;
};

GObjectClass* parentClass = nullptr;

char* startupNotifyId(GAppLaunchContext* context, GAppInfo* /*info*/, GList* /*files*/) {
    return g_strdup(reinterpret_cast<Context*>(context)->startupId);
}

void finalize(GObject* object) {
    g_free(reinterpret_cast<Context*>(object)->startupId);
    parentClass->finalize(object);
}

void initializeClass(gpointer type, gpointer /*data*/) {
    parentClass = static_cast<GObjectClass*>(g_type_class_peek_parent(type));
    static_cast<GObjectClass*>(type)->finalize = finalize;
    static_cast<GAppLaunchContextClass*>(type)->get_startup_notify_id = startupNotifyId;
}

GType contextType() {
    static const GType type = g_type_register_static_simple(
        G_TYPE_APP_LAUNCH_CONTEXT, "TavoLaunchContext", sizeof(ContextClass), initializeClass,
        sizeof(Context), nullptr, G_TYPE_FLAG_FINAL);
    return type;
}

using Variables = std::map<std::string, std::string, std::less<>>;

void add(Variables& variables, std::string_view variable) {
    const std::size_t equals = variable.find('=');
    if (equals != std::string_view::npos && equals > 0) {
        variables.emplace(variable.substr(0, equals), variable.substr(equals + 1));
    }
}

}  // namespace

LaunchContext makeLaunchContext(const StartEnvironment& environment, const std::string& startupId) {
    auto* const context = static_cast<GAppLaunchContext*>(g_object_new(contextType(), nullptr));
    if (!startupId.empty()) {
        reinterpret_cast<Context*>(context)->startupId = g_strdup(startupId.c_str());
    }
    Variables wanted;
    for (const std::string& variable : environment.forChildren()) {
        add(wanted, variable);
    }
    Variables present;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        add(present, *variable);
    }
    // The first change is what makes the context take its copy of the environment, so there has
    // to be one.
    g_app_launch_context_unsetenv(context, "DESKTOP_STARTUP_ID");
    for (const auto& [name, value] : present) {
        if (wanted.find(name) == wanted.end()) {
            g_app_launch_context_unsetenv(context, name.c_str());
        }
    }
    for (const auto& [name, value] : wanted) {
        const auto now = present.find(name);
        if (now == present.end() || now->second != value) {
            g_app_launch_context_setenv(context, name.c_str(), value.c_str());
        }
    }
    return LaunchContext(context);
}

}  // namespace tavo
