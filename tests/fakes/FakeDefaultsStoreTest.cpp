#include <gtest/gtest.h>

#include "tests/contracts/DefaultsStoreContract.h"
#include "tests/fakes/FakeDefaultsStore.h"

namespace tavo {
namespace {

class FakeWorld {
public:
    DefaultsStore& store() { return store_; }
    DefaultsStore& another() { return store_; }

    void holdMixedArray(const std::string& key) {
        store_.hold(key, FakeDefaultsStore::RawArray{"text", std::int64_t{7}});
    }
    void holdMixedDictionary(const std::string& key) {
        store_.hold(
            key, FakeDefaultsStore::RawDictionary{{"name", "text"}, {"number", std::int64_t{7}}});
    }
    void holdNumber(const std::string& key) { store_.hold(key, std::int64_t{7}); }

private:
    FakeDefaultsStore store_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, DefaultsStoreContract, FakeWorld);

TEST(FakeDefaultsStore, writes_are_remembered_in_order) {
    FakeDefaultsStore store;
    store.set("a", StringArray{"1"});
    store.set("b", Data{"2"});
    store.set("a", StringArray{});
    const std::vector<FakeDefaultsStore::Write> expected = {
        {"a", StringArray{"1"}}, {"b", Data{"2"}}, {"a", StringArray{}}};
    EXPECT_EQ(store.writes, expected);
}

TEST(FakeDefaultsStore, what_it_is_told_to_hold_is_readable_and_no_write) {
    FakeDefaultsStore store;
    store.holdValue("key", StringDictionary{{"name", "text"}});
    EXPECT_EQ(store.stringDictionary("key"), (StringDictionary{{"name", "text"}}));
    EXPECT_TRUE(store.writes.empty());
}

}  // namespace
}  // namespace tavo
