// The program's entry.
#include <QApplication>
#include <cstdio>
#include <string_view>

#include "app/TavoLauncherApp.h"
#include "platform/linux/PrefetchedApplicationSource.h"
#include "platform/linux/StartEnvironment.h"
#include "platform/linux/XdgApplicationSource.h"
#include "platform/linux/XdgEnvironment.h"

namespace {

constexpr int kUsageError = 2;

// The answer to the arguments when they end the program: its exit status, or none to go on.
std::optional<int> answerArguments(int argc, char** argv) {
    if (argc == 1) {
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
    std::fprintf(stderr, "tavolauncher: unknown arguments; it takes --help or --version alone\n");
    return kUsageError;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tavo;
    const StartEnvironment environment = StartEnvironment::capture();
    if (const auto status = answerArguments(argc, argv)) {
        return *status;
    }
    // The scan runs while the toolkit starts; the model waits for what is left of it.
    auto applications =
        makePrefetchedApplicationSource(makeXdgApplicationSource(XdgEnvironment::fromProcess()));

    QCoreApplication::setApplicationName(QStringLiteral("TavoLauncher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVO_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.tavolauncher.TavoLauncher"));
    QApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tavo Launcher"));

    TavoLauncherApp app(environment, std::move(applications));
    app.show();
    return QApplication::exec();
}
