// SIGTERM, SIGINT and SIGHUP: the signals by which a session asks a program to end.
#pragma once

#include <functional>
#include <memory>

namespace tavo {

// Calls `asked` on the main thread, in Qt's event loop, when one of these signals arrives for the
// first time. The same signal a second time ends the process at once. A signal that was ignored at
// the start, as under nohup, stays ignored. Listens until the returned object is destroyed; only
// one may exist at a time, and it must not outlive the QCoreApplication. Started programs do not
// inherit the handlers.
std::shared_ptr<void> listenForTermination(std::function<void()> asked);

}  // namespace tavo
