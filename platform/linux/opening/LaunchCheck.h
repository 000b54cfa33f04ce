// Whether a program would run, found out before it is started.
//
// A start through a shell or a terminal loses the reason why nothing runs, so the reasons are
// looked for while they can still be told. Any thread.
#pragma once

#include <string>

#include "platform/linux/entries/ExecutableLookup.h"
#include "support/Result.h"

namespace tavo {

// The path of the file that the command word `program` means to `lookup`. The error says what is
// there instead of an executable file.
Result<std::string> findProgram(const ExecutableLookup& lookup, const std::string& program,
                                const std::string& workingDirectory = {});

// The same. It is also an error when the kernel would refuse to run the file, because it is a
// script whose first line ("#!", as execve(2) reads it) names an interpreter that is not there;
// also by way of env(1).
Result<std::string> checkProgram(const ExecutableLookup& lookup, const std::string& program,
                                 const std::string& workingDirectory = {});

}  // namespace tavo
