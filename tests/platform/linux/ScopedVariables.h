// Environment variables for the length of a test.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavo {

// Puts back what was there before. Only while no other thread runs.
class ScopedVariables {
public:
    ScopedVariables() = default;
    ~ScopedVariables() {
        for (auto saved = saved_.rbegin(); saved != saved_.rend(); ++saved) {
            assign(saved->first, saved->second);
        }
    }

    ScopedVariables(const ScopedVariables&) = delete;
    ScopedVariables& operator=(const ScopedVariables&) = delete;

    void set(const std::string& name, const std::optional<std::string>& value) {
        const char* const before = std::getenv(name.c_str());
        saved_.emplace_back(name,
                            before == nullptr ? std::nullopt : std::optional<std::string>(before));
        assign(name, value);
    }

private:
    static void assign(const std::string& name, const std::optional<std::string>& value) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }

    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

}  // namespace tavo
