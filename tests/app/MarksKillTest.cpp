#include <filesystem>

#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/TemporaryFolder.h"
#include "tests/app/StoredModel.h"
#include "tests/platform/linux/fixtures/KillLoop.h"

namespace tavo {
namespace {

// So many rounds in turn use the same file. The first of them finds none, so that kills interrupt
// its making too.
constexpr int kRoundsPerFile = 5;

// A folder in memory where possible. Unlike a power failure, a kill loses nothing that was handed
// to the kernel, so a disk would only add time.
std::filesystem::path placeForKilling() {
    const char* const memory = "/dev/shm";
    return access(memory, W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

TEST(MarksKill, no_mark_whose_operation_had_returned_is_lost_when_the_program_is_killed) {
    const TemporaryFolder folder(placeForKilling());
    const auto fileOf = [&](int round) {
        return folder / (std::to_string(round / kRoundsPerFile) + "/defaults.sqlite");
    };
    int before = 0;
    int acknowledged = 0;

    KillLoop loop;
    loop.commands = [&](int round) {
        before = round % kRoundsPerFile == 0 ? 0 : before;
        return std::vector<KillLoop::Lines>{
            {TAVO_TEST_PROGRAMS "/tavo_mark_writer", fileOf(round)}};
    };
    loop.check = [&](int round, const std::vector<KillLoop::Lines>& writers) {
        const KillLoop::Lines& said = writers.front();
        acknowledged += static_cast<int>(said.size());
        const int promised = said.empty() ? before : std::stoi(said.back());
        ASSERT_EQ(promised, before + static_cast<int>(said.size()));
        StoredModel model(fileOf(round));
        for (int number = 1; number <= promised; ++number) {
            ASSERT_TRUE(hasMark(*model, number)) << "mark " << number << " of " << promised;
        }
        // The mark that was being made at the kill may be stored or not; later ones were not begun.
        before = hasMark(*model, promised + 1) ? promised + 1 : promised;
        EXPECT_FALSE(hasMark(*model, before + 1));
        EXPECT_FALSE(hasMark(*model, before + 2));
        EXPECT_FALSE(hasMark(*model, before + 3));
    };
    loop.run();

    // Rounds without any mark would prove nothing.
    EXPECT_GT(acknowledged, loop.rounds);
    std::printf("%d rounds, %d acknowledged marks\n", loop.rounds, acknowledged);
}

}  // namespace
}  // namespace tavo
