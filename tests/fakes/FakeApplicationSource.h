// Installed applications that exist only in a test.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/ApplicationSource.h"

namespace tavo {

class FakeApplicationSource final : public ApplicationSource {
public:
    // Installs an application in place of the one with the same path.
    void install(const FoundApplication& application) {
        uninstall(application.path);
        installed_.push_back(application);
    }
    void uninstall(const std::string& path) {
        std::erase_if(installed_, [&](const auto& installed) { return installed.path == path; });
    }

    // How often applications() was called.
    [[nodiscard]] int calls() const { return calls_; }

    std::vector<FoundApplication> applications() override {
        ++calls_;
        return installed_;
    }

private:
    std::vector<FoundApplication> installed_;
    int calls_ = 0;
};

}  // namespace tavo
