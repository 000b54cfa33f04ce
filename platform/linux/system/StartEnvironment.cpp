#include "platform/linux/system/StartEnvironment.h"

#include <algorithm>
#include <array>
#include <set>

#include <unistd.h>

namespace tavo {
namespace {

constexpr std::array<std::string_view, 3> kOneShot = {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN",
                                                      "DESKTOP_AUTOSTART_ID"};

std::string_view nameOf(std::string_view variable) {
    return variable.substr(0, variable.find('='));
}

}  // namespace

StartEnvironment StartEnvironment::capture() {
    std::vector<std::string> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    return StartEnvironment(std::move(variables));
}

StartEnvironment::StartEnvironment(std::vector<std::string> variables) {
    std::set<std::string, std::less<>> seen;
    for (std::string& variable : variables) {
        const std::string_view name = nameOf(variable);
        if (!name.empty() && name.size() < variable.size() && seen.emplace(name).second) {
            variables_.push_back(std::move(variable));
        }
    }
}

std::optional<std::string> StartEnvironment::value(std::string_view name) const {
    for (const std::string& variable : variables_) {
        if (nameOf(variable) == name) {
            return variable.substr(name.size() + 1);
        }
    }
    return std::nullopt;
}

std::vector<std::string> StartEnvironment::forChildren() const {
    std::vector<std::string> variables;
    std::copy_if(variables_.begin(), variables_.end(), std::back_inserter(variables),
                 [](const std::string& variable) {
                     return std::find(kOneShot.begin(), kOneShot.end(), nameOf(variable)) ==
                            kOneShot.end();
                 });
    return variables;
}

}  // namespace tavo
