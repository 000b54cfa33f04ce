// What the user reads when an application did not open.
//
// Every text is complete, plain and says why; the alert around it says that something could not
// be opened. Names and paths may hold anything: broken UTF-8 is repaired here.
#pragma once

#include <string>

#include "support/Result.h"

namespace tavo::messages {

// Errors of the application's file or folder.
Error applicationMissing(const std::string& path);
Error applicationNotReadable(const std::string& path, int code);  // an errno value
Error notAnApplication(const std::string& path);
Error entryNotReadable(const std::string& path, int code);  // an errno value
Error entryInvalid(const std::string& path);
Error entryHidden(const std::string& path);
Error entryWithoutCommand(const std::string& path);
Error entryCommandUnreadable(const std::string& path, const std::string& command);

// Errors of the application's program.
Error programNotFound(const std::string& program, const std::string& searchPath);
Error programMissing(const std::string& program);
Error programIsFolder(const std::string& program);
Error programNotExecutable(const std::string& program);
Error interpreterMissing(const std::string& program, const std::string& interpreter);
Error workingDirectoryMissing(const std::string& program, const std::string& folder);
Error terminalMissing(const std::string& program);
Error bundleWithoutProgram(const std::string& path);

// The system refused the start.
Error startRefused(const std::string& program, int code);  // an errno value

// The program ended early. `name` is the application's name, which the text adds where the program
// is called otherwise ("sh").
Error endedWithStatus(const std::string& program, const std::string& name, int status);
Error endedBySignal(const std::string& program, const std::string& name, int signal);

// Errors of an activation over the session bus.
Error serviceMissing(const std::string& name);
Error activationFailed(const std::string& name, const std::string& systemText);
Error activationUnanswered(const std::string& name);
Error busSilent(const std::string& name);

}  // namespace tavo::messages
