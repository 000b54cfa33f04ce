// SIGTERM, SIGINT and SIGHUP: the signals by which a session asks a program to end.
#pragma once

#include <functional>
#include <memory>

namespace tavo {

// Calls `asked` on the main thread, in Qt's event loop, after each of these signals that comes for
// the first time. Coming again, it ends the process at once. A signal that was ignored at the
// start, as under nohup, stays ignored. Ends with the answer, which must be the only one at a time
// and must not outlive the QCoreApplication. Started programs do not inherit any of this.
std::shared_ptr<void> listenForTermination(std::function<void()> asked);

}  // namespace tavo
