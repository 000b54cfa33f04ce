#include "platform/linux/EntryOpening.h"

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/DesktopEntryCheck.h"
#include "platform/linux/OpeningMessages.h"

namespace tavo {
namespace {

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
    ScopedSource patience;
};

void judge(Watch& watch, std::optional<int> status) {
    watch.patience.end();
    if (status && WIFSIGNALED(*status)) {
        watch.answer->fail(messages::endedBySignal(watch.program, WTERMSIG(*status)));
    } else if (status && WIFEXITED(*status) && WEXITSTATUS(*status) != 0) {
        watch.answer->fail(messages::endedWithStatus(watch.program, WEXITSTATUS(*status)));
    } else {
        watch.answer->succeed(std::nullopt);
    }
}

void watchProgram(GioThread& thread, const EntryStart& start, std::string program, pid_t process) {
    const auto watch = std::make_shared<Watch>();
    watch->answer = start.answer;
    watch->program = std::move(program);
    watch->patience = thread.after(
        start.patience,
        [answer = start.answer, running = RunningApplication{process, start.identifier}] {
            answer->succeed(running);
        });
    thread.watchChild(process, [watch](std::optional<int> status) { judge(*watch, status); });
}

Error startError(const StartableEntry& entry, GError* error) {
    // After the checks, the one thing that GIO still misses before it starts is a terminal.
    if (entry.keys.terminal && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_FAILED) != FALSE) {
        g_error_free(error);
        return messages::terminalMissing(entry.program);
    }
    return messages::startFailed(entry.program, take(error));
}

void launchProgram(GioThread& thread, const EntryStart& start, const StartableEntry& entry,
                   GDesktopAppInfo* info) {
    const bool ownFolder = !entry.keys.workingDirectory.empty();
    pid_t process = 0;
    GError* error = nullptr;
    const gboolean started = g_desktop_app_info_launch_uris_as_manager(
        info, nullptr, start.context.get(),
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD), setUpChild,
        ownFolder ? nullptr : const_cast<char*>(start.home.c_str()),
        [](GDesktopAppInfo*, GPid child, gpointer data) { *static_cast<pid_t*>(data) = child; },
        &process, &error);
    if (started == FALSE) {
        start.answer->fail(startError(entry, error));
    } else {
        watchProgram(thread, start, entry.program, process);
    }
}

// An activation that the bus has not answered yet.
struct Activation {
    GioThread& thread;
    std::shared_ptr<OpenAnswer> answer;
    std::string name;
    RunningApplication running;
    ScopedSource patience;
};

void activated(GObject* info, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Activation> activation(static_cast<Activation*>(data));
    activation->thread.endCall();
    activation->patience.end();
    GError* error = nullptr;
    if (g_app_info_launch_uris_finish(G_APP_INFO(info), result, &error) != FALSE) {
        activation->answer->succeed(activation->running);
    } else if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE) {
        g_error_free(error);
        activation->answer->fail(messages::serviceMissing(activation->name));
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
        g_error_free(error);  // the workspace ends
    } else {
        g_dbus_error_strip_remote_error(error);
        activation->answer->fail(messages::activationFailed(activation->name, take(error)));
    }
}

void activate(GioThread& thread, const EntryStart& start, const StartableEntry& entry,
              GDesktopAppInfo* info) {
    auto activation =
        std::make_unique<Activation>(Activation{thread,
                                                start.answer,
                                                entryBusName(start.path),
                                                RunningApplication{0, start.identifier},
                                                {}});
    activation->patience = thread.after(
        start.patience,
        [answer = start.answer, running = activation->running] { answer->succeed(running); });
    thread.beginCall();
    // A refused activation makes GLib 2.74 report the start's identifier as failed, and complain
    // of a programming error where there is none. It must be given a context only with one.
    GAppLaunchContext* const context =
        entry.keys.startupNotify && start.identified ? start.context.get() : nullptr;
    g_app_info_launch_uris_async(G_APP_INFO(info), nullptr, context, thread.cancellable(),
                                 activated, activation.release());
}

}  // namespace

void openEntry(GioThread& thread, EntryStart start) {
    const Result<StartableEntry> entry = checkEntry(start.path, start.searchPath);
    if (!entry) {
        start.answer->fail(entry.error());
        return;
    }
    const AppInfo info(g_desktop_app_info_new_from_filename(start.path.c_str()));
    if (!info) {
        start.answer->fail(messages::entryRefused(start.path));
        return;
    }
    // GIO asks for the bus at every start, and would wait for a silent one for ever.
    const GioThread::Bus bus = thread.sessionBus();
    if (bus == GioThread::Bus::silent) {
        start.answer->fail(messages::busSilent(start.identifier));
    } else if (bus == GioThread::Bus::connected && entry.value().keys.busActivatable) {
        activate(thread, start, entry.value(), info.get());
    } else if (entry.value().program.empty()) {
        start.answer->fail(messages::entryWithoutCommand(start.path));
    } else {
        launchProgram(thread, start, entry.value(), info.get());
    }
}

}  // namespace tavo
