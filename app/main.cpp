// The program's entry.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/DisplayFailures.h"
#include "app/LauncherApplication.h"
#include "app/TavoLauncherApp.h"
#include "platform/linux/ListedEntries.h"
#include "platform/linux/PrefetchedApplicationSource.h"
#include "platform/linux/SessionBusAddress.h"
#include "platform/linux/SessionPresence.h"
#include "platform/linux/StartEnvironment.h"
#include "platform/linux/XdgApplicationSource.h"
#include "platform/linux/XdgEnvironment.h"
#include "ui/LauncherStyle.h"

namespace {

constexpr int kFailure = 1;
constexpr int kUsageError = 2;

// For a line on a terminal: the argument's printable ASCII as it is, all its other bytes as
// numbers, and no more than can be read.
std::string quoted(std::string_view argument) {
    constexpr std::size_t kMost = 100;
    std::string shown = "\"";
    for (const char character : argument.substr(0, kMost)) {
        if (character >= ' ' && character <= '~' && character != '"' && character != '\\') {
            shown += character;
        } else {
            char escaped[sizeof "\\x00"];
            std::snprintf(escaped, sizeof escaped, "\\x%02x",
                          static_cast<unsigned char>(character));
            shown += escaped;
        }
    }
    return shown + (argument.size() > kMost ? "\"..." : "\"");
}

// The answer to the arguments when they end the program: its exit status, or none to go on.
std::optional<int> answerArguments(int argc, char** argv) {
    if (argc <= 1) {
        return std::nullopt;
    }
    const std::string_view argument = argv[1];
    if (argc == 2 && argument == "--help") {
        std::puts(
            "Usage: tavolauncher [--help | --version]\n"
            "Shows the applications installed for you and opens the one you pick.");
        return 0;
    }
    if (argc == 2 && argument == "--version") {
        std::puts("tavolauncher " TAVO_VERSION);
        return 0;
    }
    const bool known = argument == "--help" || argument == "--version";
    std::fprintf(stderr,
                 "tavolauncher: the argument %s is refused; it takes --help or --version alone\n",
                 quoted(known ? argv[2] : argument).c_str());
    return kUsageError;
}

// Libraries wait for a bus that does not answer for as long as it takes, and start one of their own
// where there is none. Ours is the only process that hears of this: what it starts gets the
// environment as it was.
void keepLibrariesFrom(const std::string& bus) {
    if (bus.empty() || !tavo::busAnswers(bus)) {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    }
}

// Whether another process shows its window instead; its exit status then.
std::optional<int> handOver(tavo::SessionPresence& presence,
                            const tavo::StartEnvironment& environment,
                            const tavo::StartRequest& request) {
    using Start = tavo::SessionPresence::Start;
    switch (presence.claim(tavo::SessionPresence::Places::in(environment), request)) {
        case Start::HandedOver:
            return 0;
        case Start::NoAnswer:
            std::fprintf(stderr,
                         "tavolauncher: another process of it is starting or ending, and takes "
                         "too long about it\n");
            return kFailure;
        case Start::GoOn:
            break;
    }
    const std::string bus = tavo::sessionBusAddress();
    keepLibrariesFrom(bus);
    presence.attend(bus, request);
    return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tavo;
    const StartEnvironment environment = StartEnvironment::capture();
    if (const auto status = answerArguments(argc, argv)) {
        return *status;
    }
    const StartRequest request = {
        .startupId = environment.value("DESKTOP_STARTUP_ID").value_or(""),
        .activationToken = environment.value("XDG_ACTIVATION_TOKEN").value_or("")};
    SessionPresence presence;
    if (const auto status = handOver(presence, environment, request)) {
        return *status;
    }
    // The scan runs while the toolkit starts; the model waits for what is left of it.
    const auto listed = std::make_shared<ListedEntries>();
    auto applications = makePrefetchedApplicationSource(
        makeXdgApplicationSource(XdgEnvironment::fromProcess(), listed));

    std::optional<StartGuard> starting(std::in_place);
    QCoreApplication::setApplicationName(QStringLiteral("TavoLauncher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVO_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.tavolauncher.TavoLauncher"));
    QApplication::setStyle(new LauncherStyle);
    LauncherApplication application(argc, argv);
    starting.reset();
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tavo Launcher"));
    const DisplayLossGuard displayMayGo;

    TavoLauncherApp app(environment, std::move(applications), listed, presence);
    if (presence.superseded()) {
        return 0;
    }
    app.show();
    int status = 0;
    // A start that finds this process ending would be left without a window.
    do {
        status = QApplication::exec();
    } while (!presence.endUnlessAsked());
    return status;
}
