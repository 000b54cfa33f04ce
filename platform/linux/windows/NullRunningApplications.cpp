#include "platform/linux/windows/NullRunningApplications.h"

namespace tavo {
namespace {

class NullRunningApplications final : public RunningApplications {
public:
    void noteUserRequest(const std::string& /*identifier*/) override {}

    std::vector<RunningApplication> withIdentifier(const std::string& /*identifier*/) override {
        return {};
    }

    bool listsWindows() override { return false; }

    std::optional<RunningApplication> withProcess(std::int32_t /*processIdentifier*/) override {
        return std::nullopt;
    }

    bool showsWindow(const RunningApplication& /*application*/) override { return false; }

    Subscription onWindowsChanged(std::function<void()> /*changed*/) override { return {}; }

    std::optional<std::string> executablePath(const RunningApplication& /*application*/) override {
        return std::nullopt;
    }

    void activateAllWindows(const RunningApplication& /*application*/) override {}
};

}  // namespace

std::unique_ptr<RunningApplications> makeNullRunningApplications() {
    return std::make_unique<NullRunningApplications>();
}

}  // namespace tavo
