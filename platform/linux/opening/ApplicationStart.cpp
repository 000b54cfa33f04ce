#include "platform/linux/opening/ApplicationStart.h"

#include <string_view>

#include <sys/wait.h>

#include "platform/linux/opening/BusActivation.h"
#include "platform/linux/opening/LaunchErrorTexts.h"
#include "platform/linux/opening/SystemdScope.h"
#include "platform/linux/opening/TerminalCommand.h"
#include "platform/linux/x11/StartupNotification.h"
#include "platform/posix/PosixSpawn.h"

namespace tavo {
namespace {

// How long a program's start waits for a session bus that does not answer. The program starts
// without the bus all the same, but then gets its systemd scope late, perhaps after it has handed
// over to another process.
constexpr std::chrono::milliseconds kBusPatience{250};
// How long an activation waits for the bus, which it cannot do without.
constexpr std::chrono::milliseconds kActivationBusPatience{2000};

using Start = std::shared_ptr<const ApplicationStart>;
using Job = OpeningThread::Job;

// How long a bus that does not answer is waited for to give a running program its systemd scope.
constexpr std::chrono::seconds kScopePatience{60};

// A started program that is watched for an early end.
struct Watch {
    std::shared_ptr<OpenAnswer> answer;
    std::string program;
    std::string name;
    ScopedSource patience;
};

void judge(Watch& watch, std::optional<int> status) {
    watch.patience.end();
    watch.answer->over();
    if (status && WIFSIGNALED(*status)) {
        watch.answer->fail(messages::endedBySignal(watch.program, watch.name, WTERMSIG(*status)));
    } else if (status && WIFEXITED(*status) && WEXITSTATUS(*status) != 0) {
        watch.answer->fail(
            messages::endedWithStatus(watch.program, watch.name, WEXITSTATUS(*status)));
    } else {
        watch.answer->succeed(std::nullopt);
    }
}

Job failing(const Start& start, Error error) {
    return [answer = start->answer, error = std::move(error)] { answer->fail(error); };
}

// Looks after the child `running`: tells that it has begun, watches for its end and gets it a
// systemd scope. Calls `ended` as OpeningThread::watchChild() does.
void superviseProgram(OpeningThread& thread, const ApplicationStart& start,
                      const RunningApplication& running,
                      std::function<void(std::optional<int>)> ended) {
    const pid_t process = running.processIdentifier;
    // The bus may answer long after the program has ended, when its PID may be another process's.
    const auto runs = std::make_shared<bool>(true);
    start.began(running);
    thread.watchChild(process, [runs, ended = std::move(ended)](std::optional<int> status) {
        *runs = false;
        ended(status);
    });
    if (thread.connection() != nullptr) {
        moveToScope(thread, start.identifier, process);
        return;
    }
    thread.askBus(kScopePatience,
                  [&thread, runs, identifier = start.identifier, process](SessionBus::State state) {
                      if (*runs && state == SessionBus::State::connected) {
                          moveToScope(thread, identifier, process);
                      }
                  });
}

// Tells an X11 desktop of the start (Startup Notification Protocol), if the entry wants that. Runs
// in the background. When it answers true, announceEndLater() must follow.
bool announce(const ApplicationStart& start, const std::string& executable) {
    return start.file.entry.startupNotify && !start.startupId.empty() &&
           announceStart(start.conditions->display,
                         {start.startupId, start.file.entry.name, executable, start.identifier});
}

// Announces the end of the start when the program shows a window or ends, and after the starting
// time at the latest.
void announceEndLater(OpeningThread& thread, const ApplicationStart& start) {
    start.answer->whenOver(
        [&thread, display = start.conditions->display, id = start.startupId] {
            thread.inBackground([display, id]() -> Job {
                announceStartOver(display, id);
                return nullptr;
            });
        },
        thread.after(start.conditions->startingTime,
                     [answer = start.answer] { answer->timeIsUp(); }));
}

void watchProgram(OpeningThread& thread, const ApplicationStart& start, const std::string& program,
                  pid_t process) {
    const RunningApplication running{process, start.identifier};
    const auto watch = std::make_shared<Watch>();
    watch->answer = start.answer;
    watch->program = program;
    watch->name = start.file.entry.name;
    // The timer also owns the watch: where the kernel refuses a pidfd, watchChild() does not keep
    // the callback that owns it.
    watch->patience = thread.after(start.conditions->patience,
                                   [watch, running] { watch->answer->succeed(running); });
    superviseProgram(thread, start, running,
                     [watch](std::optional<int> status) { judge(*watch, status); });
}

// Runs in the background, like all functions here that return a Job; the job runs on the bus
// thread.
Job startBundle(OpeningThread& thread, const Start& start, const std::string& executable) {
    SpawnRequest program;
    program.executable = executable;
    program.environment = start->environment;
    program.workingDirectory = start->home;
    pid_t process = 0;
    if (const int failure = spawnProgram(program, process); failure != 0) {
        return failing(start, messages::startRefused(executable, failure));
    }
    return [&thread, start, process] {
        const RunningApplication running{process, start->file.bundle->identifier.value_or("")};
        start->answer->succeed(running);
        superviseProgram(thread, *start, running,
                         [answer = start->answer](std::optional<int>) { answer->over(); });
    };
}

// The variables that a shell would not pass on, because it does not accept their names: functions
// that bash exports ("BASH_FUNC_module%%"), for instance. env(1) sets them again.
std::vector<std::string> variablesThatShellsDrop(const std::vector<std::string>& environment) {
    constexpr std::string_view kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_0123456789";
    std::vector<std::string> dropped;
    for (const std::string& variable : environment) {
        const std::size_t nameEnd = variable.find_first_not_of(kLetters);
        if (nameEnd != std::string::npos && variable[nameEnd] != '=' && variable.front() != '-') {
            dropped.push_back(variable);
        }
    }
    return dropped;
}

// Runs the command of an entry, `words`. GIO_LAUNCHED_DESKTOP_FILE_PID says that the entry named in
// GIO_LAUNCHED_DESKTOP_FILE was started as this very process, and not as an ancestor. Only the
// child knows its PID before the program runs, so a shell sets the variable. Returns what
// spawnProgram() returns.
int startCommand(const ApplicationStart& start, const std::vector<std::string>& words,
                 pid_t& process) {
    const std::string& folder = start.file.entry.path;
    SpawnRequest program;
    program.executable = "/bin/sh";
    program.arguments = {"-c", "export GIO_LAUNCHED_DESKTOP_FILE_PID=$$; exec \"$@\"", "sh"};
    const std::vector<std::string> dropped = variablesThatShellsDrop(start.environment);
    if (!dropped.empty() && words.front().find('=') == std::string::npos) {
        program.arguments.emplace_back("/usr/bin/env");
        program.arguments.insert(program.arguments.end(), dropped.begin(), dropped.end());
    }
    program.arguments.insert(program.arguments.end(), words.begin(), words.end());
    program.environment = start.environment;
    program.workingDirectory = folder.empty() ? start.home : folder;
    return spawnProgram(program, process);
}

Job startEntry(OpeningThread& thread, const Start& start, const ProgramToStart& program) {
    std::vector<std::string> words;
    if (start->file.entry.terminal) {
        const ExecutableLookup lookup(start->conditions->searchPath);
        auto terminal = terminalCommand(lookup, start->conditions->wayland);
        if (!terminal) {
            return failing(start, messages::terminalMissing(program.program));
        }
        words = *std::move(terminal);
    }
    words.insert(words.end(), program.words.begin(), program.words.end());
    const bool announced = announce(*start, program.executable);
    pid_t process = 0;
    const int failure = startCommand(*start, words, process);
    return [&thread, start, name = program.program, announced, failure, process] {
        if (announced) {
            announceEndLater(thread, *start);
        }
        if (failure != 0) {
            start->answer->fail(messages::startRefused(name, failure));
        } else {
            watchProgram(thread, *start, name, process);
        }
    };
}

// Keeps the start of an activated service under way until its window shows.
void awaitServiceWindow(OpeningThread& thread, const ApplicationStart& start,
                        const RunningApplication& service) {
    start.answer->start()->answered();
    if (!start.seesWindows) {
        start.answer->over();
        return;
    }
    if (service.processIdentifier > 0) {
        start.began(service);
        thread.watchChild(service.processIdentifier,
                          [answer = start.answer](std::optional<int>) { answer->over(); });
    }
}

void callService(OpeningThread& thread, const Start& start) {
    // The bus may have been lost while the start was announced.
    if (thread.connection() == nullptr) {
        start->answer->fail(messages::busSilent(start->identifier));
        return;
    }
    // Until the service has answered, a second start would at best be a second activation.
    start->answer->start()->awaitAnswer();
    start->began({0, start->identifier});
    activateOverBus(
        thread,
        {start->file.busName, start->address, start->startupId, start->activationToken,
         start->conditions->busPatience},
        [&thread, start](const Result<ActivatedService>& service) {
            OpenAnswer& answer = *start->answer;
            if (!service) {
                answer.fail(service.error());
            } else if (service.value().runs) {
                const RunningApplication running{service.value().process, start->identifier};
                // Before the answer, so that a click that follows the answer finds the start in its
                // new state.
                awaitServiceWindow(thread, *start, running);
                answer.succeed(running);
            } else {
                answer.over();
                answer.succeed(std::nullopt);
            }
        });
}

Job activate(OpeningThread& thread, const Start& start, const std::string& executable) {
    return [&thread, start, announced = announce(*start, executable)] {
        if (announced) {
            announceEndLater(thread, *start);
        }
        callService(thread, start);
    };
}

void startOrActivate(OpeningThread& thread, const Start& start, const ProgramToStart& program) {
    const bool activatable = !start->file.busName.empty();
    thread.askBus(activatable ? kActivationBusPatience : kBusPatience,
                  [&thread, start, program, activatable](SessionBus::State bus) {
                      if (activatable && bus == SessionBus::State::connected) {
                          thread.inBackground([&thread, start, executable = program.executable] {
                              return activate(thread, start, executable);
                          });
                      } else if (activatable && bus == SessionBus::State::silent) {
                          start->answer->fail(messages::busSilent(start->identifier));
                      } else if (program.words.empty()) {
                          start->answer->fail(messages::entryWithoutCommand(start->file.path));
                      } else {
                          thread.inBackground([&thread, start, program] {
                              return startEntry(thread, start, program);
                          });
                      }
                  });
}

}  // namespace

void startApplication(OpeningThread& thread, const std::shared_ptr<const ApplicationStart>& start) {
    thread.inBackground([&thread, start]() -> Job {
        const Result<ProgramToStart> program = programToStart(
            start->file, ExecutableLookup(start->conditions->searchPath), start->address);
        if (!program) {
            return failing(start, program.error());
        }
        if (start->file.bundle) {
            return startBundle(thread, start, program.value().executable);
        }
        return [&thread, start, program = program.value()] {
            startOrActivate(thread, start, program);
        };
    });
}

}  // namespace tavo
