// Writers killed at any moment lose nothing that they had acknowledged.
#include <algorithm>
#include <filesystem>

#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/store/SqliteDefaultsStore.h"
#include "tests/TemporaryFolder.h"
#include "tests/platform/linux/fixtures/KillLoop.h"
#include "tests/platform/linux/store/RawSqlite.h"
#include "tests/platform/linux/store/StoreMarks.h"

namespace tavo {
namespace {

// So many rounds in turn use the same file. The first of them finds none, so that kills interrupt
// its making too.
constexpr int kRoundsPerFile = 4;

// The number of the writer's last mark. Checks that each key holds, unaltered, the mark that was
// written to it last; nullopt if one is altered.
std::optional<int> checkedMarks(const DefaultsStore& store, const std::string& writer) {
    const std::optional<int> last = lastMark(store, writer);
    if (!last) {
        ADD_FAILURE() << "a mark is not whole";
        return std::nullopt;
    }
    for (int number = std::max(1, *last - kMarkKeys + 1); number <= *last; ++number) {
        EXPECT_EQ(storedMark(store, writer, number), number);
    }
    return last;
}

// A folder in memory where possible. Unlike a power failure, a kill loses nothing that was handed
// to the kernel, so a disk would only add time.
std::filesystem::path placeForKilling() {
    const char* const memory = "/dev/shm";
    return access(memory, W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

void expectNothingAcknowledgedLost(const std::vector<std::string>& writers) {
    const TemporaryFolder folder(placeForKilling());
    std::vector<int> before;
    int acknowledged = 0;
    const auto fileOf = [&](int round) {
        return folder / (std::to_string(round / kRoundsPerFile) + "/defaults.sqlite");
    };

    KillLoop loop;
    loop.commands = [&](int round) {
        if (round % kRoundsPerFile == 0) {
            before.assign(writers.size(), 0);
        }
        std::vector<KillLoop::Lines> commands;
        for (const std::string& writer : writers) {
            commands.push_back(
                {TAVO_TEST_PROGRAMS "/tavo_store_writer", "marks", fileOf(round), writer});
        }
        return commands;
    };
    loop.check = [&](int round, const std::vector<KillLoop::Lines>& said) {
        const std::string file = fileOf(round);
        const auto store = makeSqliteDefaultsStore(file);
        for (std::size_t i = 0; i < writers.size(); ++i) {
            acknowledged += static_cast<int>(said[i].size());
            const int promised = said[i].empty() ? before[i] : std::stoi(said[i].back());
            ASSERT_EQ(promised, before[i] + static_cast<int>(said[i].size()));
            const std::optional<int> last = checkedMarks(*store, writers[i]);
            ASSERT_TRUE(last);
            // The mark that was being written at the kill may be stored or not.
            EXPECT_GE(*last, promised);
            EXPECT_LE(*last, promised + 1);
            before[i] = *last;
        }
        // Another write must remove the journal that the kill left. Its value changes each round,
        // because SQLite writes nothing when nothing changes.
        store->set("checked", Data{std::to_string(round)});
        const std::filesystem::directory_iterator files(std::filesystem::path(file).parent_path());
        EXPECT_EQ(std::distance(begin(files), end(files)), 1);
        EXPECT_EQ(RawSqlite(file).run("PRAGMA integrity_check"), "ok");
    };
    loop.run();

    // Rounds without any write would prove nothing.
    EXPECT_GT(acknowledged, loop.rounds);
    std::printf("%d rounds, %d acknowledged writes\n", loop.rounds, acknowledged);
}

TEST(StoreKill, a_killed_writer_loses_nothing_that_it_had_acknowledged) {
    expectNothingAcknowledgedLost({"one"});
}

TEST(StoreKill, of_three_writers_killed_at_once_none_loses_what_it_had_acknowledged) {
    expectNothingAcknowledgedLost({"one", "two", "three"});
}

}  // namespace
}  // namespace tavo
