// What the program does without a display.
#pragma once

#include <memory>

namespace tavo {

// While this object lives, Qt connects to a display, or the process ends with status 1 and a line
// on standard error that names the display:
//   - no display could be opened. Where that is not the display's fault but Qt's, as when a
//     platform plug-in is missing, Qt's own reason comes before that line;
//   - the display takes the connection and does not answer for twelve seconds. Qt would wait for
//     ever.
// Standard error is held back meanwhile, because Qt, libxcb and libwayland each write lines of
// their own about a missing display. What they wrote is printed when this object is destroyed. One
// at a time, on the main thread. Uses SIGALRM.
class StartGuard {
public:
    StartGuard();
    StartGuard(const StartGuard&) = delete;
    StartGuard& operator=(const StartGuard&) = delete;
    ~StartGuard();

private:
    class HeldError;
    std::unique_ptr<HeldError> error_;
};

// When the display goes away, Qt writes a line on standard error and ends the process, on any
// thread. While this object lives, that happens with status 1, at once and without destructors,
// because other threads are still running.
class DisplayLossGuard {
public:
    DisplayLossGuard();
    DisplayLossGuard(const DisplayLossGuard&) = delete;
    DisplayLossGuard& operator=(const DisplayLossGuard&) = delete;
    ~DisplayLossGuard();
};

}  // namespace tavo
