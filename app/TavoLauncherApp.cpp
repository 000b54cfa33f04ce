#include "app/TavoLauncherApp.h"

#include <QCoreApplication>

#include "catalogue/Favorites.h"
#include "platform/ApplicationSource.h"
#include "platform/ChildProcess.h"
#include "platform/DefaultsStore.h"
#include "platform/FileManager.h"
#include "platform/IconSource.h"
#include "platform/MainQueue.h"
#include "platform/linux/GioWorkspace.h"
#include "platform/linux/PosixChildProcess.h"
#include "platform/linux/PosixFileManager.h"
#include "platform/linux/PropertyList.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SqliteDefaultsStore.h"
#include "platform/linux/UnknownRunningApplications.h"
#include "platform/linux/XcbCompositing.h"
#include "platform/linux/XdgEnvironment.h"
#include "platform/linux/XdgIconSource.h"
#include "ui/AccessibleItems.h"
#include "ui/LauncherView.h"
#include "ui/LauncherWindow.h"
#include "ui/ToolkitTexts.h"

namespace tavo {
namespace {

OpeningSettings openingSettings(StartEnvironment environment) {
    std::vector<std::string> folders;
    for (const std::string& dataDir : XdgEnvironment::fromProcess().dataDirs) {
        folders.push_back(dataDir + "/applications");
    }
    return {.environment = std::move(environment),
            .applicationFolders = std::move(folders),
            .userTime = {}};
}

std::optional<std::string> bundleIconFile(const std::string& bundle) {
    const auto values = readPropertyListStrings(bundle + "/Contents/Info.plist");
    const auto icon = values.find("CFBundleIconFile");
    return icon == values.end() ? std::nullopt : std::optional(icon->second);
}

}  // namespace

struct TavoLauncherApp::Parts {
    Parts(StartEnvironment environment, std::unique_ptr<ApplicationSource> found)
        : applications(std::move(found)),
          workspace(makeGioWorkspace(openingSettings(std::move(environment)))),
          window(*compositing) {
        Favorites::shared().use(*defaults);
        auto* const view = new LauncherView({.platform = {.defaults = *defaults,
                                                          .files = *files,
                                                          .applications = *applications,
                                                          .workspace = *workspace,
                                                          .running = *running,
                                                          .processes = *processes,
                                                          .mainQueue = *mainQueue},
                                             .text = TextRules::forUser(),
                                             .icons = *icons,
                                             .mainQueue = *mainQueue},
                                            &window);
        window.setContent(view);
        // Nothing could bring a closed window back, so closing it ends the program.
        view->onClose = [] { QCoreApplication::quit(); };
        // Esc would end it too easily.
        view->onEscape = [] {};
        window.onClose = [] { QCoreApplication::quit(); };
        window.onQuit = [] { QCoreApplication::quit(); };
    }

    std::unique_ptr<ApplicationSource> applications;
    std::unique_ptr<MainQueue> mainQueue = makeQtMainQueue();
    std::unique_ptr<DefaultsStore> defaults = makeSqliteDefaultsStore(defaultStoreFile());
    std::unique_ptr<FileManager> files = makePosixFileManager();
    std::unique_ptr<RunningApplications> running = makeUnknownRunningApplications();
    std::unique_ptr<ChildProcess> processes = makePosixChildProcess();
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<IconSource> icons =
        makeXdgIconSource(IconEnvironment::fromProcess(), bundleIconFile);
    std::unique_ptr<Compositing> compositing = makeXcbCompositing();
    LauncherWindow window;
};

TavoLauncherApp::TavoLauncherApp(StartEnvironment environment,
                                 std::unique_ptr<ApplicationSource> applications) {
    installAccessibleItems();
    QCoreApplication::installTranslator(new ToolkitTexts(qApp));
    parts_ = std::make_unique<Parts>(std::move(environment), std::move(applications));
}

TavoLauncherApp::~TavoLauncherApp() = default;

void TavoLauncherApp::show() {
    parts_->window.present();
}

}  // namespace tavo
