#include "tests/contracts/ChildProcessContract.h"
#include "tests/fakes/FakeChildProcess.h"

namespace tavo {
namespace {

struct FakeChildProcessRig {
    ChildProcess& processes() { return fake; }
    void expect(const std::string& executable, const std::vector<std::string>& arguments,
                const std::optional<std::string>& output) {
        fake.answer({executable, arguments}, output);
    }

    FakeChildProcess fake;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ChildProcessContract, FakeChildProcessRig);

TEST(FakeChildProcess, runs_are_recorded_in_order) {
    FakeChildProcess fake;
    fake.answerAnything("x");
    EXPECT_EQ(fake.output("/a", {"1"}), "x");
    EXPECT_EQ(fake.output("/b", {}), "x");
    EXPECT_EQ(fake.runs, (std::vector<FakeChildProcess::Run>{{"/a", {"1"}}, {"/b", {}}}));
}

}  // namespace
}  // namespace tavo
