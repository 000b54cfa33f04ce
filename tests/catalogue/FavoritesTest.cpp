#include <gtest/gtest.h>

#include "catalogue/Favorites.h"
#include "tests/fakes/FakeDefaultsStore.h"

namespace tavo {
namespace {

constexpr char kKey[] = "mirvo.favoriteApps";

class FavoritesTest : public testing::Test {
protected:
    FavoritesTest() { favorites.use(store); }

    FakeDefaultsStore store;
    Favorites favorites;
};

TEST_F(FavoritesTest, none_are_there_when_nothing_is_stored) {
    EXPECT_TRUE(favorites.urls().empty());
}

TEST_F(FavoritesTest, toggling_adds_a_path_and_stores_the_whole_set) {
    favorites.toggle("/b");
    favorites.toggle("/a");
    EXPECT_EQ(favorites.urls(), (PathSet{"/a", "/b"}));
    EXPECT_EQ(store.writes.back(), (FakeDefaultsStore::Write{kKey, StringArray{"/a", "/b"}}));
}

TEST_F(FavoritesTest, toggling_twice_restores_the_set_and_stores_an_empty_array) {
    favorites.toggle("/a");
    favorites.toggle("/a");
    EXPECT_TRUE(favorites.urls().empty());
    EXPECT_EQ(store.writes.back(), (FakeDefaultsStore::Write{kKey, StringArray{}}));
}

TEST_F(FavoritesTest, a_change_made_by_somebody_else_is_seen_at_the_next_read) {
    favorites.toggle("/a");
    store.holdValue(kKey, StringArray{"/x", "/y"});
    EXPECT_EQ(favorites.urls(), (PathSet{"/x", "/y"}));
}

TEST_F(FavoritesTest, a_value_of_another_form_reads_as_none_and_stays_until_the_next_toggle) {
    store.hold(kKey, FakeDefaultsStore::RawArray{std::string("/a"), std::int64_t{5}});
    EXPECT_TRUE(favorites.urls().empty());
    EXPECT_TRUE(store.writes.empty());
    favorites.toggle("/b");
    EXPECT_EQ(favorites.urls(), PathSet{"/b"});
}

TEST_F(FavoritesTest, repeated_paths_in_the_store_are_one) {
    store.holdValue(kKey, StringArray{"/a", "/a"});
    EXPECT_EQ(favorites.urls(), PathSet{"/a"});
    favorites.toggle("/a");
    EXPECT_TRUE(favorites.urls().empty());
}

TEST_F(FavoritesTest, paths_are_compared_byte_by_byte) {
    favorites.toggle("/Editor.app");
    favorites.toggle("/editor.app");
    EXPECT_EQ(favorites.urls().size(), 2U);
}

TEST(Favorites, the_shared_one_is_always_the_same) {
    EXPECT_EQ(&Favorites::shared(), &Favorites::shared());
}

}  // namespace
}  // namespace tavo
