#include <functional>
#include <memory>

#include "tests/contracts/WorkspaceContract.h"
#include "tests/fakes/FakeWorkspace.h"

namespace tavo {
namespace {

struct FakeWorkspaceRig {
    Workspace& workspace() { return *fake; }
    void end() { fake.reset(); }

    std::string bundle(std::optional<std::string> identifier,
                       std::optional<std::string> signature) const {
        fake->bundles["/Bundle.app"] = {std::move(identifier), std::move(signature), {}};
        return "/Bundle.app";
    }
    static std::string startable() { return "/Startable.app"; }
    static std::string broken() { return "/Broken.app"; }
    static std::string nowhere() { return "/nowhere"; }

    void deliver(const std::function<bool()>& answered) const {
        EXPECT_FALSE(answered());
        const std::size_t last = fake->openings.size() - 1;
        if (fake->openings[last].path == startable()) {
            fake->complete(last, RunningApplication{7, "id"}, std::nullopt);
        } else {
            fake->complete(last, std::nullopt, Error{"a reason"});
        }
        EXPECT_TRUE(answered());
    }

    std::unique_ptr<FakeWorkspace> fake = std::make_unique<FakeWorkspace>();
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WorkspaceContract, FakeWorkspaceRig);

TEST(FakeWorkspace, openings_are_recorded_with_their_configuration) {
    FakeWorkspace fake;
    fake.openApplication("/a", {}, [](const auto&, const auto&) {});
    fake.openApplication("/b", {.activates = false}, [](const auto&, const auto&) {});
    ASSERT_EQ(fake.openings.size(), 2U);
    EXPECT_EQ(fake.openings[0].path, "/a");
    EXPECT_TRUE(fake.openings[0].activates);
    EXPECT_EQ(fake.openings[1].path, "/b");
    EXPECT_FALSE(fake.openings[1].activates);
}

TEST(FakeWorkspace, delivering_a_completion_twice_is_refused) {
    FakeWorkspace fake;
    fake.openApplication("/a", {}, [](const auto&, const auto&) {});
    fake.complete(0, std::nullopt, std::nullopt);
    EXPECT_THROW(fake.complete(0, std::nullopt, std::nullopt), std::logic_error);
}

}  // namespace
}  // namespace tavo
