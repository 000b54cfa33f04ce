// What becomes of the program when there is no display, or no more.
#pragma once

#include <memory>

namespace tavo {

// While it lives, the toolkit comes up, or the process ends with one line on standard error and
// status 1: when no display can be opened, where the toolkit would abort, and when the display
// takes the connection and says nothing for ten seconds, where it would wait for ever. What
// anybody else writes to standard error meanwhile is held back until the toolkit has come up: not
// only the toolkit has something to say about a display, the libraries below it write by
// themselves. One at a time, on the main thread.
class StartGuard {
public:
    StartGuard();
    StartGuard(const StartGuard&) = delete;
    StartGuard& operator=(const StartGuard&) = delete;
    ~StartGuard();

private:
    class HeldError;
    class Watch;
    std::unique_ptr<HeldError> error_;
    std::unique_ptr<Watch> watch_;
};

// From now on: when the display goes away, the toolkit leaves the process from wherever it is, with
// a line on standard error and status 1. Other threads are at work then, so nothing is taken down.
// Until this ends.
class DisplayLossGuard {
public:
    DisplayLossGuard();
    DisplayLossGuard(const DisplayLossGuard&) = delete;
    DisplayLossGuard& operator=(const DisplayLossGuard&) = delete;
    ~DisplayLossGuard();
};

}  // namespace tavo
