#include "app/linux/LibraryEntry.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "app/LauncherQApplication.h"
#include "app/linux/DisplayFailures.h"
#include "app/linux/TavoLauncherApp.h"
#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/entries/PrefetchedApplicationSource.h"
#include "platform/linux/entries/XdgApplicationSource.h"
#include "platform/linux/instance/InstanceSocket.h"
#include "platform/linux/instance/SingleInstance.h"
#include "platform/linux/system/StartEnvironment.h"
#include "platform/qt/PlatformTheme.h"
#include "platform/qt/ScaleVariables.h"
#include "support/ApplicationId.h"
#include "ui/controls/LauncherStyle.h"

namespace {

// Qt and the accessibility libraries wait for a session bus that does not answer, without limit,
// and start one where there is none; Qt waits for the accessibility bus in the same way. The
// variables that are set here keep them from it; applications get the environment as it was.
// SessionBus connects to the returned address whenever the bus answers.
std::string chooseBus() {
    std::string address = tavo::sessionBusAddress();
    if (address.empty() || !tavo::busAnswers(address)) {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    } else if (!tavo::accessibilityBusAnswers()) {
        ::setenv("AT_SPI_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    }
    return address;
}

}  // namespace

int runTavoLauncher(tavo::LaunchArguments& launch) {
    using namespace tavo;
    // The environment is changed here alone, before the first thread starts: afterwards a library
    // may read it on any thread. Qt would use the activation token by itself, and unset the
    // variable later.
    ::unsetenv("XDG_ACTIVATION_TOKEN");
    removeUnusableScaleVariables();
    SessionBus bus(chooseBus());
    SingleInstance instance(bus, std::move(launch.socket), launch.request);
    // Scans while Qt starts. The model waits for the rest of the scan.
    const auto entries = std::make_shared<DesktopEntryIndex>();
    auto applications = makePrefetchedApplicationSource(
        makeXdgApplicationSource(DesktopEntryEnvironment::fromProcess(), entries));

    std::optional<StartGuard> starting(std::in_place);
    QCoreApplication::setApplicationName(QStringLiteral("TavoLauncher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVO_VERSION));
    QGuiApplication::setDesktopFileName(QLatin1String(kApplicationId));
    QApplication::setStyle(new LauncherStyle);
    PlatformThemeArguments arguments(launch.program);
    LauncherQApplication application(arguments.count(), arguments.values());
    starting.reset();
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tavo Launcher"));
    const DisplayLossGuard displayLoss;

    TavoLauncherApp app(launch.environment, bus, std::move(applications), entries, instance);
    if (instance.superseded()) {
        return 0;
    }
    app.show(launch.request.activationToken);
    int status = 0;
    // A start that asked for the window just as the user quit still gets it.
    do {
        status = QApplication::exec();
    } while (!instance.endUnlessAsked() && !application.wasToldToEnd());
    return status;
}
