#include "platform/linux/opening/EntryOpening.h"

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/opening/BusActivation.h"
#include "platform/linux/opening/DesktopEntryCheck.h"
#include "platform/linux/opening/ExecKey.h"
#include "platform/linux/opening/LaunchErrors.h"
#include "platform/linux/opening/TerminalCommand.h"
#include "platform/linux/x11/StartupNotification.h"
#include "platform/posix/PosixSpawn.h"

namespace tavo {
namespace {

// An activation cannot do without the bus, anything else can.
constexpr std::chrono::milliseconds kBusPatience{250};
constexpr std::chrono::milliseconds kActivationBusPatience{2000};

using AppInfo = std::unique_ptr<GDesktopAppInfo, UnrefObject>;

std::string take(GError* error) {
    std::string text = error->message;
    g_error_free(error);
    return text;
}

// Runs in the child between fork and exec, where only async-signal-safe calls are allowed.
void setUpChild(gpointer home) {
    ::setsid();
    if (home != nullptr) {
        [[maybe_unused]] const int failure = ::chdir(static_cast<const char*>(home));
    }
    for (int number = 1; number < NSIG; ++number) {
        ::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// A started program in its first seconds.
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

void watchProgram(GLibThread& thread, const ApplicationStart& start, const StartableEntry& entry,
                  pid_t process) {
    const RunningApplication running{process, start.identifier};
    const auto watch = std::make_shared<Watch>();
    watch->answer = start.answer;
    watch->program = entry.program;
    watch->name = entry.keys.name;
    watch->patience = thread.after(start.conditions->patience,
                                   [answer = start.answer, running] { answer->succeed(running); });
    superviseProgram(thread, start, running,
                     [watch](std::optional<int> status) { judge(*watch, status); });
}

// Tells the desktop, if the entry's program understands that. The end is told when the program
// shows a window or ends, and after the starting time at the latest.
void announce(GLibThread& thread, const ApplicationStart& start, const StartableEntry& entry) {
    const std::string& display = start.conditions->display;
    if (!entry.keys.startupNotify || start.startupId.empty() ||
        !announceStart(display,
                       {start.startupId, entry.keys.name, entry.executable, start.identifier})) {
        return;
    }
    start.answer->whenOver([display, id = start.startupId] { announceStartOver(display, id); },
                           thread.after(start.conditions->startingTime,
                                        [answer = start.answer] { answer->timeIsUp(); }));
}

Result<pid_t> startByGio(const ApplicationStart& start, const StartableEntry& entry) {
    const AppInfo info(g_desktop_app_info_new_from_filename(start.path.c_str()));
    if (!info) {
        return messages::entryRefused(start.path);
    }
    const bool ownFolder = !entry.keys.workingDirectory.empty();
    pid_t process = 0;
    GError* error = nullptr;
    const gboolean started = g_desktop_app_info_launch_uris_as_manager(
        info.get(), nullptr, start.context.get(),
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD), setUpChild,
        ownFolder ? nullptr : const_cast<char*>(start.home.c_str()),
        [](GDesktopAppInfo*, GPid child, gpointer data) { *static_cast<pid_t*>(data) = child; },
        &process, &error);
    if (started == FALSE) {
        return messages::startFailed(entry.program, take(error));
    }
    return process;
}

// As GIO does, whose marks the program gets. `terminal`: the words that come before the command.
Result<pid_t> startPlainly(const ApplicationStart& start, const StartableEntry& entry,
                           const std::vector<std::string>& terminal) {
    const std::vector<std::string> words = commandWords(start.path, entry.keys);
    if (words.empty()) {
        return messages::entryCommandUnreadable(start.path, entry.keys.command);
    }
    ProgramStart program;
    program.executable = "/bin/sh";
    program.arguments = {"-c", "export GIO_LAUNCHED_DESKTOP_FILE_PID=$$; exec \"$@\"", "sh"};
    program.arguments.insert(program.arguments.end(), terminal.begin(), terminal.end());
    program.arguments.insert(program.arguments.end(), words.begin(), words.end());
    program.environment = start.environment;
    program.environment.push_back("GIO_LAUNCHED_DESKTOP_FILE=" + start.path);
    program.workingDirectory =
        entry.keys.workingDirectory.empty() ? start.home : entry.keys.workingDirectory;
    pid_t process = 0;
    if (const int failure = startProgram(program, process); failure != 0) {
        return messages::startRefused(entry.program, failure);
    }
    return process;
}

// GIO knows too few terminals, and waits for a bus that does not answer.
void launchProgram(GLibThread& thread, const ApplicationStart& start, const StartableEntry& entry,
                   bool busAnswers) {
    std::vector<std::string> terminal;
    if (entry.keys.terminal) {
        auto found = terminalCommand(start.conditions->searchPath, start.conditions->wayland);
        if (!found) {
            start.answer->fail(messages::terminalMissing(entry.program));
            return;
        }
        terminal = *std::move(found);
    }
    announce(thread, start, entry);
    const Result<pid_t> process = busAnswers && !entry.keys.terminal
                                      ? startByGio(start, entry)
                                      : startPlainly(start, entry, terminal);
    if (process) {
        watchProgram(thread, start, entry, process.value());
    } else {
        start.answer->fail(process.error());
    }
}

// The service has been activated: the start goes on until its window is there.
void awaitServiceWindow(GLibThread& thread, const ApplicationStart& start,
                        const RunningApplication& service) {
    start.answer->start()->answered();
    // Where no window can be seen, none can be brought forward either but by activating it again:
    // that must not wait for a window that never shows.
    if (!start.conditions->seesWindows || !start.conditions->seesWindows()) {
        start.answer->over();
        return;
    }
    if (service.processIdentifier > 0) {
        start.began(service);
        thread.watchChild(service.processIdentifier,
                          [answer = start.answer](std::optional<int>) { answer->over(); });
    }
}

void activate(GLibThread& thread, const std::shared_ptr<const ApplicationStart>& start,
              const StartableEntry& entry) {
    announce(thread, *start, entry);
    // Until the service has answered, a second start would at best be a second activation.
    start->answer->start()->awaitAnswer();
    start->began({0, start->identifier});
    activateOverBus(
        thread,
        {entryBusName(start->path), start->startupId, start->activationToken,
         start->conditions->busPatience},
        [&thread, start](const Result<ActivatedService>& service) {
            OpenAnswer& answer = *start->answer;
            if (!service) {
                answer.fail(service.error());
            } else if (service.value().runs) {
                const RunningApplication running{service.value().process, start->identifier};
                answer.succeed(running);
                awaitServiceWindow(thread, *start, running);
            } else {
                answer.over();
                answer.succeed(std::nullopt);
            }
        });
}

}  // namespace

void openEntry(GLibThread& thread, const std::shared_ptr<const ApplicationStart>& start) {
    const StartConditions& conditions = *start->conditions;
    const Result<StartableEntry> entry =
        checkEntry(start->path, conditions.searchPath, conditions.languages);
    if (!entry) {
        start->answer->fail(entry.error());
        return;
    }
    const bool activatable = entry.value().keys.busActivatable;
    const GLibThread::Bus bus =
        thread.sessionBus(activatable ? kActivationBusPatience : kBusPatience);
    if (activatable && bus == GLibThread::Bus::connected) {
        activate(thread, start, entry.value());
    } else if (activatable && bus == GLibThread::Bus::silent) {
        start->answer->fail(messages::busSilent(start->identifier));
    } else if (entry.value().program.empty()) {
        start->answer->fail(messages::entryWithoutCommand(start->path));
    } else {
        launchProgram(thread, *start, entry.value(), bus != GLibThread::Bus::silent);
    }
}

}  // namespace tavo
