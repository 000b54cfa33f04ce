// The ChildProcess port over posix_spawn(3).
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "platform/ChildProcess.h"

namespace tavo {

struct ChildProcessLimits {
    std::chrono::milliseconds time{500};       // until the child has ended
    std::size_t bytes = std::size_t{1} << 20;  // of its output
};

// A child that still runs when its time is over, or that writes more than allowed, is killed with
// all that it started, and its answer is absent. Every child has been reaped when the call returns.
// Works whether or not SIGCHLD is ignored. Children inherit the environment of this process.
std::unique_ptr<ChildProcess> makePosixChildProcess(ChildProcessLimits limits = {});

}  // namespace tavo
