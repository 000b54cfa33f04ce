// Kills a writing program over and over, at moments that a fixed seed decides.
//
// The writer says a line on standard output, flushed, for each thing that it has written, after
// the write has returned; and goes on until it is killed. What a dead writer said is what must
// still be there.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/platform/linux/ChildProgram.h"

namespace tavo {

struct KillLoop {
    int rounds = 200;
    std::uint32_t seed = 20260101;
    // A round lets the writer say up to so many lines, and then so much more time at most.
    int lines = 12;
    std::chrono::microseconds longest{4000};
    // The writer's command line in this round; what it said is judged by `check`.
    std::function<std::vector<std::string>(int round)> command;
    std::function<void(int round, const std::vector<std::string>& said)> check;

    // Stops at the first round whose check fails.
    void run() const {
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> someLines(0, lines);
        std::uniform_int_distribution<std::int64_t> someTime(0, longest.count());
        for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
            const int awaited = someLines(random);
            const std::chrono::microseconds longer(someTime(random));
            SCOPED_TRACE("round " + std::to_string(round) + ": killed " +
                         std::to_string(longer.count()) + " us after line " +
                         std::to_string(awaited));
            check(round, linesOfOneLife(command(round), awaited, longer));
        }
    }

    static std::vector<std::string> linesOfOneLife(const std::vector<std::string>& command,
                                                   int awaited, std::chrono::microseconds longer) {
        ChildProgram writer(command);
        std::vector<std::string> said;
        while (static_cast<int>(said.size()) < awaited) {
            if (std::optional<std::string> line = writer.readLine()) {
                said.push_back(std::move(*line));
            } else {
                ADD_FAILURE() << "the writer ended by itself";
                return said;
            }
        }
        // No event to wait for: the moment of death is meant to be anywhere.
        std::this_thread::sleep_for(longer);
        writer.kill();
        while (std::optional<std::string> line = writer.readLine()) {
            said.push_back(std::move(*line));
        }
        const int status = writer.wait();
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
            << "the writer ended by itself, with status " << status;
        return said;
    }
};

}  // namespace tavo
