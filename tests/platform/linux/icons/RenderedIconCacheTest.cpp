#include <filesystem>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/icons/RenderedIconCache.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

namespace fs = std::filesystem;

RenderedIcon iconOf(std::uint32_t colour, int side = 8) {
    RenderedIcon icon;
    icon.image = {side, std::vector<std::uint32_t>(static_cast<std::size_t>(side * side), colour)};
    icon.file = "/usr/share/pixmaps/a.png";
    icon.stamp = {1'700'000'000'123'456'789, 4711};
    icon.lookup = 42;
    return icon;
}

class RenderedIconCacheTest : public testing::Test {
protected:
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> files;
        for (const auto& entry : fs::directory_iterator(folder_ / "deep/cache")) {
            files.push_back(entry.path().string());
        }
        return files;
    }

    void expectKept(const std::optional<RenderedIcon>& kept, const RenderedIcon& icon) {
        ASSERT_TRUE(kept);
        EXPECT_EQ(kept->image, icon.image);
        EXPECT_EQ(kept->file, icon.file);
        EXPECT_EQ(kept->stamp, icon.stamp);
        EXPECT_EQ(kept->lookup, icon.lookup);
    }

    TemporaryFolder folder_;
    RenderedIconCache cache_{folder_ / "deep/cache"};
};

TEST_F(RenderedIconCacheTest, an_icon_comes_back_as_it_was_written) {
    EXPECT_FALSE(cache_.read("key", 8));
    cache_.write("key", iconOf(0xff112233U));
    expectKept(cache_.read("key", 8), iconOf(0xff112233U));
    expectKept(RenderedIconCache(folder_ / "deep/cache").read("key", 8), iconOf(0xff112233U));
    EXPECT_FALSE(cache_.read("other key", 8));
    EXPECT_FALSE(cache_.read("key", 9));
}

TEST_F(RenderedIconCacheTest, the_newest_write_holds) {
    cache_.write("key", iconOf(1));
    cache_.write("key", iconOf(2));
    expectKept(cache_.read("key", 8), iconOf(2));
    EXPECT_EQ(files().size(), 1U) << "nothing is left beside it";
}

TEST_F(RenderedIconCacheTest, icons_from_no_file_are_kept_too) {
    RenderedIcon drawn = iconOf(3);
    drawn.file.clear();
    drawn.stamp = {};
    cache_.write("", drawn);
    expectKept(cache_.read("", 8), drawn);
}

TEST_F(RenderedIconCacheTest, files_are_for_the_user_alone) {
    cache_.write("key", iconOf(1));
    EXPECT_EQ(fs::status(folder_ / "deep/cache").permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(files().front()).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(RenderedIconCacheTest, a_file_with_any_broken_byte_counts_as_not_there) {
    cache_.write("key", iconOf(0x01020304U));
    const std::string file = files().front();
    const std::string whole = readFile(file);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::string bytes = whole;
        bytes[i] = static_cast<char>(bytes[i] ^ 0x10);
        writeFile(file, bytes);
        EXPECT_FALSE(cache_.read("key", 8)) << "byte " << i;
    }
    cache_.write("key", iconOf(5));
    expectKept(cache_.read("key", 8), iconOf(5));
}

TEST_F(RenderedIconCacheTest, a_file_of_another_length_counts_as_not_there) {
    cache_.write("key", iconOf(0x01020304U));
    const std::string file = files().front();
    const std::string whole = readFile(file);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        writeFile(file, whole.substr(0, length));
        EXPECT_FALSE(cache_.read("key", 8)) << length << " bytes";
    }
    writeFile(file, whole + "x");
    EXPECT_FALSE(cache_.read("key", 8));
}

TEST_F(RenderedIconCacheTest, the_file_of_another_key_counts_as_not_there) {
    cache_.write("one", iconOf(1));
    const std::string one = files().front();
    const std::string bytes = readFile(one);
    fs::remove(one);
    cache_.write("two", iconOf(2));
    writeFile(files().front(), bytes);
    EXPECT_FALSE(cache_.read("two", 8));
}

TEST_F(RenderedIconCacheTest, what_is_no_file_in_its_place_is_never_waited_for) {
    cache_.write("key", iconOf(1));
    const std::string file = files().front();
    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(cache_.read("key", 8));
    fs::remove(file);
    fs::create_symlink("/dev/zero", file);
    EXPECT_FALSE(cache_.read("key", 8));
    cache_.write("key", iconOf(2));
    expectKept(cache_.read("key", 8), iconOf(2));
}

TEST_F(RenderedIconCacheTest, without_a_folder_nothing_is_kept_and_nothing_fails) {
    RenderedIconCache none("");
    none.write("key", iconOf(1));
    EXPECT_FALSE(none.read("key", 8));
    writeFile(folder_ / "file", "not a folder");
    RenderedIconCache blocked(folder_ / "file/cache");
    blocked.write("key", iconOf(1));
    EXPECT_FALSE(blocked.read("key", 8));
}

TEST_F(RenderedIconCacheTest, a_folder_that_vanishes_is_made_again) {
    cache_.write("key", iconOf(1));
    fs::remove_all(folder_ / "deep");
    EXPECT_FALSE(cache_.read("key", 8));
    cache_.write("key", iconOf(2));
    expectKept(cache_.read("key", 8), iconOf(2));
}

TEST_F(RenderedIconCacheTest, the_oldest_files_go_when_there_are_too_many) {
    for (int i = 0; i < 40; ++i) {
        cache_.write(std::to_string(i), iconOf(1));
    }
    std::int64_t date = 1'000'000'000;
    for (const std::string& file : files()) {
        setDate(file, date++);
    }
    RenderedIconCache small(folder_ / "deep/cache", {.files = 20, .bytes = 1U << 30U});
    small.write("new", iconOf(7));
    EXPECT_EQ(files().size(), 15U);
    expectKept(small.read("new", 8), iconOf(7));
}

TEST_F(RenderedIconCacheTest, the_oldest_files_go_when_they_are_too_large_together) {
    for (int i = 0; i < 10; ++i) {
        cache_.write(std::to_string(i), iconOf(1, 64));
    }
    for (const std::string& file : files()) {
        setDate(file, 1'000'000'000);
    }
    RenderedIconCache small(folder_ / "deep/cache", {.files = 1000, .bytes = 100'000});
    small.write("new", iconOf(7, 64));
    std::uintmax_t bytes = 0;
    for (const std::string& file : files()) {
        bytes += fs::file_size(file);
    }
    EXPECT_LE(bytes, 75'000U);
    EXPECT_GT(bytes, 0U);
    expectKept(small.read("new", 64), iconOf(7, 64));
}

TEST_F(RenderedIconCacheTest, several_threads_may_read_and_write_at_once) {
    {
        std::vector<std::jthread> threads;
        for (std::uint32_t thread = 0; thread < 4; ++thread) {
            threads.emplace_back([this, thread] {
                for (int round = 0; round < 50; ++round) {
                    cache_.write("shared", iconOf(thread));
                    const auto kept = cache_.read("shared", 8);
                    ASSERT_TRUE(kept);
                    EXPECT_LT(kept->image.pixels.front(), 4U);
                    EXPECT_EQ(kept->image.pixels.front(), kept->image.pixels.back());
                }
            });
        }
    }
    EXPECT_EQ(files().size(), 1U);
}

}  // namespace
}  // namespace tavo
