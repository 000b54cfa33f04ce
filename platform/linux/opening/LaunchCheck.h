// Whether a program would run, found out before it is started.
//
// A shell or a terminal would not pass on why a program does not run, so the reason is looked for
// beforehand. Any thread.
#pragma once

#include <string>

#include "platform/linux/entries/ExecutableLookup.h"
#include "support/Result.h"

namespace tavo {

// The path of the file that `lookup` finds for `program`, the first word of a command. The error
// says what is there instead of an executable file.
Result<std::string> findProgram(const ExecutableLookup& lookup, const std::string& program,
                                const std::string& workingDirectory = {});

// Like findProgram(), but it is also an error when the kernel would refuse to run the file, because
// it is a script whose first line ("#!", as execve(2) reads it) names an interpreter that does not
// exist. An interpreter that env(1) is to run is looked for, too.
Result<std::string> checkProgram(const ExecutableLookup& lookup, const std::string& program,
                                 const std::string& workingDirectory = {});

}  // namespace tavo
