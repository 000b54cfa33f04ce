// Between the executable that users start and the library that holds the program.
//
// Most starts only bring the window of the one that already runs to the front. The executable does
// that with nothing loaded but the C++ library, and loads the program, with the toolkit and all
// else that it needs, only when it goes on.
#pragma once

#include <memory>

#include "platform/StartRequest.h"

namespace tavo {

class InstanceSocket;
class StartEnvironment;

// What the executable has found out. Both sides are built together, so the types are the same.
struct ProgramStart {
    int argc = 0;
    char** argv = nullptr;
    const StartEnvironment& environment;
    StartRequest request;
    std::unique_ptr<InstanceSocket> socket;  // null where there is no place for one
};

}  // namespace tavo

// The one function of the library: the whole run of the program, to its exit status. `start` lives
// until the process ends.
extern "C" __attribute__((visibility("default"))) int runTavoLauncher(tavo::ProgramStart& start);
