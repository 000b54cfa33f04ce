#include "tests/contracts/ApplicationSourceContract.h"
#include "tests/fakes/FakeApplicationSource.h"

namespace tavo {
namespace {

class FakeWorld final : public ApplicationSourceWorld {
public:
    ApplicationSource& source() override { return source_; }

    FoundApplication install(const std::string& key, const std::string& name) override {
        const FoundApplication application{name, "/" + key};
        source_.install(application);
        return application;
    }
    void uninstall(const std::string& key) override { source_.uninstall("/" + key); }

private:
    FakeApplicationSource source_;
};

INSTANTIATE_TEST_SUITE_P(Fake, ApplicationSourceContract,
                         testing::Values(ApplicationSourceCase{
                             "fake", [] { return std::make_unique<FakeWorld>(); }}),
                         nameOfCase);

TEST(FakeApplicationSource, counts_how_often_it_was_asked) {
    FakeApplicationSource source;
    EXPECT_THAT(source.applications(), testing::IsEmpty());
    EXPECT_THAT(source.applications(), testing::IsEmpty());
    EXPECT_EQ(source.calls(), 2);
}

}  // namespace
}  // namespace tavo
