// The one function by which the executable enters the library that holds the program.
//
// Most starts only bring the window of the running process to the front. The executable does that
// with the C++ library alone, and loads this library, with Qt and all else that it links to, only
// when it goes on.
#pragma once

#include <memory>

#include "platform/StartRequest.h"

namespace tavo {

class InstanceSocket;
class StartEnvironment;

struct LaunchArguments {
    char* program = nullptr;  // argv[0]
    const StartEnvironment& environment;
    StartRequest request;
    std::unique_ptr<InstanceSocket> socket;  // null where there is no folder for one
};

}  // namespace tavo

// Runs the program and returns its exit status. `launch` must live until the process ends. The
// executable and the library are built together, so the C++ types agree.
extern "C" __attribute__((visibility("default"))) int runTavoLauncher(
    tavo::LaunchArguments& launch);
