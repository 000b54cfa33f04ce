#include <array>
#include <map>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/linux/icons/GtkIconCache.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

struct Entry {
    std::size_t subfolder;
    std::uint32_t suffixes;
};

// The bytes of an icon-theme.cache as gtk-update-icon-cache writes it, with three hash buckets.
std::string cacheBytes(const std::vector<std::string>& subfolders,
                       const std::map<std::string, std::vector<Entry>>& icons) {
    constexpr std::uint32_t kBuckets = 3;
    constexpr std::uint32_t kNone = 0xffffffffU;
    std::string tail;
    constexpr std::uint32_t kTailAt = 12 + 4 + 4 * kBuckets;
    const auto append = [&](const std::string& bytes) {
        const auto at = static_cast<std::uint32_t>(kTailAt + tail.size());
        tail += bytes;
        return at;
    };
    std::array<std::uint32_t, kBuckets> buckets = {kNone, kNone, kNone};
    for (const auto& [name, entries] : icons) {
        std::uint32_t hash = 0;
        for (const char letter : name) {
            hash = (hash << 5U) - hash + static_cast<std::uint32_t>(letter);
        }
        std::string images = bigEndian(static_cast<std::uint32_t>(entries.size()));
        for (const Entry& entry : entries) {
            images += bigEndian16(static_cast<std::uint32_t>(entry.subfolder)) +
                      bigEndian16(entry.suffixes) + bigEndian(0);
        }
        const auto nameAt = append(name + '\0');
        const auto imagesAt = append(images);
        buckets[hash % kBuckets] =
            append(bigEndian(buckets[hash % kBuckets]) + bigEndian(nameAt) + bigEndian(imagesAt));
    }
    std::string list = bigEndian(static_cast<std::uint32_t>(subfolders.size()));
    for (const std::string& subfolder : subfolders) {
        list += bigEndian(append(subfolder + '\0'));
    }
    const auto listAt = append(list);
    std::string head =
        bigEndian16(1) + bigEndian16(0) + bigEndian(12) + bigEndian(listAt) + bigEndian(kBuckets);
    for (const std::uint32_t bucket : buckets) {
        head += bigEndian(bucket);
    }
    return head + tail;
}

const std::map<std::string, std::vector<Entry>> kIcons = {
    {"terminal", {{0, GtkIconCache::kPng}, {1, GtkIconCache::kSvg}}},
    {"editor", {{1, GtkIconCache::kSvg | GtkIconCache::kXpm}}},
    {"caff\xc3\xa8", {{0, GtkIconCache::kPng}}},
    {"calculator", {{0, GtkIconCache::kPng}}},
    {"folder", {}},
};

class GtkIconCacheTest : public testing::Test {
protected:
    std::optional<GtkIconCache> open(const std::string& bytes) {
        writeFile(folder_ / "icon-theme.cache", bytes);
        return GtkIconCache::open(folder_ / "icon-theme.cache");
    }

    TemporaryFolder folder_;
};

TEST_F(GtkIconCacheTest, finds_every_name_with_its_subfolders_and_suffixes) {
    const auto cache = open(cacheBytes({"48x48/apps", "scalable/apps"}, kIcons));
    ASSERT_TRUE(cache);
    EXPECT_EQ(cache->subfolders(), (std::vector<std::string>{"48x48/apps", "scalable/apps"}));
    for (const auto& [name, entries] : kIcons) {
        SCOPED_TRACE(name);
        const auto images = cache->images(name);
        ASSERT_EQ(images.size(), entries.size());
        for (std::size_t i = 0; i < images.size(); ++i) {
            EXPECT_EQ(images[i].subfolder, entries[i].subfolder);
            EXPECT_EQ(images[i].suffixes, entries[i].suffixes);
        }
    }
    EXPECT_TRUE(cache->images("nothing").empty());
    EXPECT_TRUE(cache->images("").empty());
    EXPECT_TRUE(cache->images(std::string(5000, 'x')).empty());
}

TEST_F(GtkIconCacheTest, of_another_version_or_kind_it_is_none) {
    std::string bytes = cacheBytes({"a"}, kIcons);
    bytes[1] = 2;
    EXPECT_FALSE(open(bytes));
    EXPECT_FALSE(open(""));
    EXPECT_FALSE(open("no cache at all, but long enough to be read"));
    EXPECT_FALSE(GtkIconCache::open(folder_ / "missing"));
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(GtkIconCache::open(folder_ / "pipe"));
}

TEST_F(GtkIconCacheTest, survives_being_cut_off_anywhere) {
    const std::string whole = cacheBytes({"48x48/apps", "scalable/apps"}, kIcons);
    int opened = 0;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        if (const auto cache = open(whole.substr(0, length))) {
            ++opened;
            for (const auto& [name, entries] : kIcons) {
                EXPECT_LE(cache->images(name).size(), entries.size());
            }
        }
    }
    EXPECT_LT(opened, 20);
}

TEST_F(GtkIconCacheTest, survives_any_broken_byte) {
    const std::string whole = cacheBytes({"48x48/apps", "scalable/apps"}, kIcons);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::string bytes = whole;
        bytes[i] = static_cast<char>(~bytes[i]);
        if (const auto cache = open(bytes)) {
            for (const auto& icon : kIcons) {
                for (const GtkIconCache::Image& image : cache->images(icon.first)) {
                    EXPECT_LT(image.subfolder, cache->subfolders().size());
                }
            }
        }
    }
}

TEST_F(GtkIconCacheTest, a_chain_that_leads_back_to_itself_ends) {
    // One hash bucket, in whose list the only icon is followed by itself.
    const std::string bytes = bigEndian16(1) + bigEndian16(0) + bigEndian(12) + bigEndian(32) +
                              bigEndian(1) + bigEndian(20) + bigEndian(20) + bigEndian(32) +
                              bigEndian(32) + bigEndian(0);
    const auto cache = open(bytes);
    ASSERT_TRUE(cache);
    EXPECT_TRUE(cache->images("terminal").empty());
}

}  // namespace
}  // namespace tavo
