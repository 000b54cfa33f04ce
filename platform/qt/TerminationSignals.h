// The signals by which a session asks a program to end.
#pragma once

#include <functional>
#include <memory>

namespace tavo {

// From now on SIGTERM, SIGINT and SIGHUP call `asked` on the main thread, in its event loop; the
// second signal ends the process as if nobody listened. One that was ignored from the start stays
// ignored, as under nohup. At most one at a time, within the life of the application object;
// signals have their usual effect again afterwards. Children that are started do not inherit it.
std::shared_ptr<void> listenForTermination(std::function<void()> asked);

}  // namespace tavo
