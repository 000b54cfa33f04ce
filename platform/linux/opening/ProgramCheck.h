// Whether a program can be started, found out before trying.
//
// Starting a program through several layers (GLib's helper, a shell, a terminal) loses the reason
// why nothing runs; here it is found while it can still be told. Any thread.
#pragma once

#include <optional>
#include <string>

#include "support/Result.h"

namespace tavo {

// The file that the command word `program` means: an absolute path, a path from
// `workingDirectory` when it holds a slash, else the first executable file of that name in the
// folders of `searchPath` (the form of PATH; empty folders do not count). The error says that it
// does not exist, is a folder, or is not executable.
Result<std::string> findProgram(const std::string& program, const std::string& searchPath,
                                const std::string& workingDirectory);

// Why the system would refuse to run the script at `path`: its first line ("#!", as execve reads
// it) names an interpreter that is not there, also by way of env(1). None for anything else.
std::optional<Error> whyScriptCannotRun(const std::string& path, const std::string& searchPath);

}  // namespace tavo
