#include <chrono>
#include <cstdio>
#include <numeric>

#include <gtest/gtest.h>

#include "platform/linux/windows/TransientRoots.h"

namespace tavo {
namespace {

struct Row {
    const char* name;
    std::vector<std::size_t> parents;
    std::vector<std::size_t> transientRoots;
};

class TransientRoots : public testing::TestWithParam<Row> {};

TEST_P(TransientRoots, are_where_dialogs_end) {
    EXPECT_EQ(transientRootsOf(GetParam().parents), GetParam().transientRoots);
}

INSTANTIATE_TEST_SUITE_P(
    Windows, TransientRoots,
    testing::Values(Row{"none", {}, {}},                                             //
                    Row{"no_dialogs", {0, 1, 2}, {0, 1, 2}},                         //
                    Row{"dialogs_of_dialogs", {0, 0, 1, 2}, {0, 0, 0, 0}},           //
                    Row{"dialogs_below_their_windows", {1, 2, 3, 3}, {3, 3, 3, 3}},  //
                    Row{"two_in_a_circle", {1, 0}, {0, 1}},                          //
                    Row{"all_in_a_circle", {1, 2, 3, 0}, {0, 1, 2, 3}},              //
                    Row{"into_a_circle", {1, 2, 3, 2, 3}, {2, 2, 2, 3, 3}},          //
                    Row{"beside_a_circle", {1, 0, 2, 2}, {0, 1, 2, 2}}),
    [](const auto& row) { return std::string(row.param.name); });

// With a step for each window and each other one this would take hours.
TEST(TransientRootsOf, a_million_windows_in_a_row_and_in_a_circle_are_no_work) {
    constexpr std::size_t kMany = 1'000'000;
    std::vector<std::size_t> next(kMany);
    std::iota(next.begin(), next.end(), 1);
    std::vector<std::size_t> row = next;
    row.back() = kMany - 1;
    std::vector<std::size_t> circle = next;
    circle.back() = 0;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(transientRootsOf(row), std::vector<std::size_t>(kMany, kMany - 1));
    std::iota(next.begin(), next.end(), 0);
    EXPECT_EQ(transientRootsOf(circle), next);
    const auto took = std::chrono::steady_clock::now() - begin;
    std::printf("took %lld ms\n",
                static_cast<long long>(
                    std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
}

}  // namespace
}  // namespace tavo
