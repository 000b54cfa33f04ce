#include "platform/linux/opening/GioLaunchContext.h"

#include <map>
#include <string_view>

#include <unistd.h>

namespace tavo {
namespace {

using Variables = std::map<std::string, std::string, std::less<>>;

void add(Variables& variables, std::string_view variable) {
    const std::size_t equals = variable.find('=');
    if (equals != std::string_view::npos && equals > 0) {
        variables.emplace(variable.substr(0, equals), variable.substr(equals + 1));
    }
}

}  // namespace

LaunchContext makeLaunchContext(const std::vector<std::string>& variables) {
    LaunchContext owned(g_app_launch_context_new());
    GAppLaunchContext* const context = owned.get();
    Variables wanted;
    for (const std::string& variable : variables) {
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
    return owned;
}

}  // namespace tavo
