#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/linux/entries/KeyFile.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

TEST(KeyFileLines, walks_through_groups_and_keys) {
    constexpr std::string_view kText =
        "lonely=1\n# comment\n[First]\r\n  key = some value \r\n;other=2\nno key here\n\n"
        "[Second]\nkey==\nlast=";
    std::string seen;
    for (KeyFileLines lines(kText); lines.next();) {
        seen += std::string(lines.group()) + "|" + std::string(lines.key()) + "|" +
                std::string(lines.value()) + "\n";
    }
    EXPECT_EQ(seen, "|lonely|1\nFirst|key|some value\nSecond|key|=\nSecond|last|\n");
}

TEST(KeyFile, a_key_counts_in_its_group_alone_and_the_last_one_holds) {
    const TemporaryFolder folder;
    writeFile(folder / "kdeglobals",
              "[Other]\nTheme=no\n[Icons]\nTheme=first\nTheme[$i]=second\nThemes=no\n");
    EXPECT_EQ(keyFileValue(folder / "kdeglobals", "Icons", "Theme"), "second");
    EXPECT_EQ(keyFileValue(folder / "kdeglobals", "Icons", "Size"), std::nullopt);
    EXPECT_EQ(keyFileValue(folder / "missing", "Icons", "Theme"), std::nullopt);
}

TEST(KeyFile, what_is_no_regular_file_of_bearable_size_has_no_values) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(keyFileValue(folder / "pipe", "Icons", "Theme"), std::nullopt);
    EXPECT_EQ(keyFileValue(folder.path().string(), "Icons", "Theme"), std::nullopt);
    writeFile(folder / "huge", "[Icons]\nTheme=x\n" + std::string(kLargestKeyFile, '\n'));
    EXPECT_EQ(keyFileValue(folder / "huge", "Icons", "Theme"), std::nullopt);
}

}  // namespace
}  // namespace tavo
