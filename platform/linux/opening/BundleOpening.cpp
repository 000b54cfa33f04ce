#include "platform/linux/opening/BundleOpening.h"

#include "platform/linux/bundles/BundleFolder.h"
#include "platform/linux/opening/LaunchErrors.h"
#include "platform/linux/opening/ProgramCheck.h"
#include "platform/posix/PosixSpawn.h"

namespace tavo {
namespace {

// The path of the program in the bundle at `path`, if it would run.
Result<std::string> bundleProgram(const std::string& path, const BundleFacts& facts,
                                  const std::string& searchPath) {
    if (!facts.executablePath) {
        return messages::bundleWithoutProgram(path);
    }
    Result<std::string> program = findProgram(*facts.executablePath, searchPath, "");
    if (program) {
        if (const auto failure = whyScriptCannotRun(program.value(), searchPath)) {
            return *failure;
        }
    }
    return program;
}

}  // namespace

void openBundle(GLibThread& thread, const ApplicationStart& start) {
    const BundleFacts facts = readBundleFolder(start.path).value_or(BundleFacts());
    const Result<std::string> executable =
        bundleProgram(start.path, facts, start.conditions->searchPath);
    if (!executable) {
        start.answer->fail(executable.error());
        return;
    }
    ProgramStart program;
    program.executable = executable.value();
    program.environment = start.environment;
    program.workingDirectory = start.home;
    pid_t process = 0;
    if (const int failure = startProgram(program, process); failure != 0) {
        start.answer->fail(messages::startRefused(executable.value(), failure));
        return;
    }
    const RunningApplication running{process, facts.identifier.value_or("")};
    start.answer->succeed(running);
    superviseProgram(thread, start, running,
                     [answer = start.answer](std::optional<int>) { answer->over(); });
}

}  // namespace tavo
