#include <algorithm>

#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/store/SqliteDefaultsStore.h"
#include "tests/TemporaryFolder.h"
#include "tests/platform/linux/fixtures/KillLoop.h"
#include "tests/platform/linux/store/RawSqlite.h"
#include "tests/platform/linux/store/StoreMarks.h"

namespace tavo {
namespace {

// Every so many rounds begin with nothing, so that the making of the file is interrupted too.
constexpr int kRoundsPerFile = 4;

// The last mark in the store, with all of them checked: each key holds the mark that was written
// to it last, whole. Absent after a failure.
std::optional<int> checkedMarks(const std::string& file) {
    const auto store = makeSqliteDefaultsStore(file);
    const std::optional<int> last = lastMark(*store);
    if (!last) {
        ADD_FAILURE() << "a mark is not whole";
        return std::nullopt;
    }
    for (int number = std::max(1, *last - kMarkKeys + 1); number <= *last; ++number) {
        EXPECT_EQ(storedMark(*store, number), number);
    }
    return last;
}

// In memory where there is such a folder. A killed process, unlike a power failure, leaves behind
// all that it gave to the system, so that the speed of a disk would add nothing but time.
std::filesystem::path placeForKilling() {
    const char* const memory = "/dev/shm";
    return access(memory, W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

TEST(StoreKill, a_writer_killed_at_any_moment_loses_nothing_that_it_had_acknowledged) {
    const TemporaryFolder folder(placeForKilling());
    int before = 0;
    int acknowledged = 0;
    const auto fileOf = [&](int round) {
        return folder / (std::to_string(round / kRoundsPerFile) + "/defaults.sqlite");
    };

    KillLoop loop;
    loop.command = [&](int round) {
        before = round % kRoundsPerFile == 0 ? 0 : before;
        return std::vector<std::string>{TAVO_TEST_PROGRAMS "/tavo_store_writer", "marks",
                                        fileOf(round)};
    };
    loop.check = [&](int round, const std::vector<std::string>& said) {
        const std::string file = fileOf(round);
        acknowledged += static_cast<int>(said.size());
        const int promised = said.empty() ? before : std::stoi(said.back());
        ASSERT_EQ(promised, before + static_cast<int>(said.size()));
        const std::optional<int> last = checkedMarks(file);
        ASSERT_TRUE(last);
        // The one in flight may have arrived or not.
        EXPECT_GE(*last, promised);
        EXPECT_LE(*last, promised + 1);
        before = *last;

        const auto parent = std::filesystem::path(file).parent_path();
        if (std::filesystem::exists(parent)) {
            for (const auto& entry : std::filesystem::directory_iterator(parent)) {
                EXPECT_EQ(entry.path().string().find("unreadable"), std::string::npos)
                    << entry.path();
            }
        }
        if (*last > 0) {
            EXPECT_EQ(RawSqlite(file).run("PRAGMA integrity_check"), "ok");
        }
    };
    loop.run();

    // Rounds in which nothing was ever written would prove nothing.
    EXPECT_GT(acknowledged, loop.rounds);
    RecordProperty("acknowledged", acknowledged);
    std::printf("%d rounds, %d acknowledged writes\n", loop.rounds, acknowledged);
}

}  // namespace
}  // namespace tavo
