// A user's systemd, made up: what it is asked on the session bus, and what it says to that.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/platform/linux/ChildProgram.h"
#include "tests/platform/linux/ProcessFixture.h"

namespace tavo::processes {

class UserManagerStandIn {
public:
    explicit UserManagerStandIn(const Folder& folder) : requests_(folder, "requests") {}

    // Has the name on this process's bus when this returns. `behaviour` is what it does when it is
    // asked for a scope: "answer", "refuse" or "silence". One that runs already ends before.
    void start(const std::string& behaviour) {
        program_.reset();
        program_.emplace(std::vector<std::string>{
            std::string(TAVO_TEST_PROGRAMS) + "/tavo_user_manager", requests_.path(), behaviour});
        EXPECT_EQ(program_->readLine(), "ready");
    }

    // The next request that came, "(none)" when none comes.
    std::string request() { return requests_.line().value_or("(none)"); }

private:
    Report requests_;
    std::optional<ChildProgram> program_;
};

}  // namespace tavo::processes
