#include "app/linux/LibraryEntry.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "app/LauncherQApplication.h"
#include "app/linux/DisplayFailures.h"
#include "app/linux/TavoLauncherApp.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/entries/PrefetchedApplicationSource.h"
#include "platform/linux/entries/XdgApplicationSource.h"
#include "platform/linux/entries/XdgEnvironment.h"
#include "platform/linux/instance/InstanceSocket.h"
#include "platform/linux/session/SingleInstance.h"
#include "platform/linux/system/StartEnvironment.h"
#include "ui/controls/LauncherStyle.h"

namespace {

// Libraries wait for a bus that does not answer for as long as it takes, and start one of their own
// where there is none: they are kept from both. We ourselves use it as soon as it answers. Ours is
// the only process that hears of this: what it starts gets the environment as it was.
tavo::SessionBus findBus() {
    tavo::SessionBus bus = {.address = tavo::sessionBusAddress()};
    bus.forLibraries = !bus.address.empty() && tavo::busAnswers(bus.address);
    if (!bus.forLibraries) {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    }
    return bus;
}

}  // namespace

int runTavoLauncher(tavo::ProgramStart& start) {
    using namespace tavo;
    // The toolkit would use it, and take it out while other threads read theirs. From the first
    // thread on nothing of ours changes the environment.
    ::unsetenv("XDG_ACTIVATION_TOKEN");
    SingleInstance presence(std::move(start.socket));
    const SessionBus bus = findBus();
    presence.attend(bus.address, start.request);
    // The scan runs while the toolkit starts; the model waits for what is left of it.
    const auto listed = std::make_shared<DesktopEntryIndex>();
    auto applications = makePrefetchedApplicationSource(
        makeXdgApplicationSource(XdgEnvironment::fromProcess(), listed));

    std::optional<StartGuard> starting(std::in_place);
    QCoreApplication::setApplicationName(QStringLiteral("TavoLauncher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVO_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.tavolauncher.TavoLauncher"));
    QApplication::setStyle(new LauncherStyle);
    LauncherQApplication application(start.argc, start.argv);
    starting.reset();
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tavo Launcher"));
    const DisplayLossGuard displayMayGo;

    TavoLauncherApp app(start.environment, bus, std::move(applications), listed, presence);
    if (presence.superseded()) {
        return 0;
    }
    app.show(start.request.activationToken);
    int status = 0;
    // A start that finds this process ending because its user quit would be left without a window.
    do {
        status = QApplication::exec();
    } while (!presence.endUnlessAsked() && !application.wasToldToEnd());
    return status;
}
