#include "app/linux/TavoLauncherApp.h"

#include <QCoreApplication>
#include <cstdio>

#include "app/LauncherQApplication.h"
#include "app/TavoLauncherMenuController.h"
#include "catalogue/Favorites.h"
#include "platform/ApplicationSource.h"
#include "platform/ChildProcess.h"
#include "platform/DefaultsStore.h"
#include "platform/FileManager.h"
#include "platform/MainQueue.h"
#include "platform/linux/bundles/PropertyList.h"
#include "platform/linux/dbus/SessionBusAddress.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/entries/XdgEnvironment.h"
#include "platform/linux/icons/XdgIconSource.h"
#include "platform/linux/opening/LinuxWorkspace.h"
#include "platform/linux/opening/UrlOpener.h"
#include "platform/linux/session/SessionRunningApplications.h"
#include "platform/linux/session/SessionStatusItemHosts.h"
#include "platform/linux/session/SessionWindowManagement.h"
#include "platform/linux/session/SingleInstance.h"
#include "platform/linux/session/WindowListing.h"
#include "platform/linux/settings/PortalDesktopSettings.h"
#include "platform/linux/store/SqliteDefaultsStore.h"
#include "platform/linux/wayland/ActivationTokens.h"
#include "platform/linux/wayland/WaylandSession.h"
#include "platform/linux/x11/XcbCompositing.h"
#include "platform/linux/x11/XcbUserTime.h"
#include "platform/posix/PosixChildProcess.h"
#include "platform/posix/PosixFileManager.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/TerminationSignals.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/CursorBlinkTimeout.h"
#include "ui/look/DesktopLook.h"
#include "ui/look/ToolkitTexts.h"
#include "ui/window/ApplicationIcon.h"
#include "ui/window/FirstFrame.h"
#include "ui/window/LauncherView.h"
#include "ui/window/LauncherWindow.h"

namespace tavo {
namespace {

std::string activationToken(ActivationTokens& tokens, const std::string& identifier) {
    return tokens.token(std::string(withoutEntrySuffix(identifier))).value_or("");
}

std::vector<std::string> applicationFolders() {
    std::vector<std::string> folders;
    for (const std::string& dataDir : XdgEnvironment::fromProcess().dataDirs) {
        folders.push_back(dataDir + "/applications");
    }
    return folders;
}

std::optional<std::string> bundleIconFile(const std::string& bundle) {
    const auto values = readPropertyListStrings(bundle + "/Contents/Info.plist");
    const auto icon = values.find("CFBundleIconFile");
    return icon == values.end() ? std::nullopt : std::optional(icon->second);
}

}  // namespace

struct TavoLauncherApp::Parts {
    Parts(const StartEnvironment& environment, const SessionBus& bus,
          std::unique_ptr<ApplicationSource> found, std::shared_ptr<DesktopEntryIndex> listed,
          SingleInstance& session)
        : presence(session),
          applications(std::move(found)),
          childEnvironment(environment.forChildren()),
          settings(makePortalDesktopSettings(*mainQueue, bus.address)),
          wayland(isWaylandSession(environment)),
          running(
              makeSessionRunningApplications(environment, wayland, std::move(listed), userTime)),
          workspace(makeLinuxWorkspace(
              {.mainQueue = *mainQueue,
               .environment = environment,
               .wayland = wayland,
               .bus = bus,
               .applicationFolders = applicationFolders(),
               .userTime = userTime,
               .activationToken =
                   [this](const std::string& identifier) {
                       return activationToken(*tokens, identifier);
                   },
               .showsWindow =
                   [this](const RunningApplication& started) {
                       return running->showsWindow(started);
                   },
               .seesWindows = [this,
                               environment] { return canListWindows(environment, wayland); }})),
          window(*compositing) {
        Favorites::shared().use(*defaults);
        view = new LauncherView({.platform = {.defaults = *defaults,
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
        view->onClose = [this] { controller.closeLauncher(); };
        view->onEscape = [this] { controller.escape(); };
        view->onLink = [this](const std::string& address) {
            if (!openLink(address, childEnvironment)) {
                std::fprintf(stderr, "tavolauncher: no program opens %s\n", address.c_str());
            }
        };
        window.onClose = [this] { controller.closeLauncher(); };
        window.onQuit = [this] { controller.quit(); };
        window.onAnother = [this] { management->prepareToShow(window.winId(), {}); };
        presence.serve(
            *mainQueue,
            {.activated = [this](const StartRequest& r) { controller.showLauncher(r); },
             .superseded = [this] { controller.quit(); },
             .changed = [this] { hosts->presenceChanged(); },
             .itemClicked = [this](const StatusItemClick& c) { hosts->clicked.emit(c); }});
    }

    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;
    ~Parts() { presence.stopServing(); }

    void useIconTheme(const std::string& name) {
        icons->preferTheme(name);
        if (view != nullptr) {
            view->refreshIcons();
        }
    }

    SingleInstance& presence;
    std::unique_ptr<ApplicationSource> applications;
    std::vector<std::string> childEnvironment;
    std::unique_ptr<MainQueue> mainQueue = makeQtMainQueue();
    // It is asking while the rest is made.
    std::unique_ptr<DesktopSettings> settings;
    std::unique_ptr<DefaultsStore> defaults = makeSqliteDefaultsStore(defaultStoreFile());
    std::unique_ptr<FileManager> files = makePosixFileManager();
    UserTime userTime = watchXcbUserTime();
    std::unique_ptr<ActivationTokens> tokens = makeWaylandActivationTokens();
    const bool wayland;
    std::unique_ptr<RunningApplications> running;
    std::unique_ptr<ChildProcess> processes = makePosixChildProcess();
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<XdgIconSource> icons =
        makeXdgIconSource(IconEnvironment::fromProcess(wayland), bundleIconFile);
    std::unique_ptr<Compositing> compositing = makeXcbCompositing();
    CursorBlinkTimeout caretRest;
    LauncherView* view = nullptr;
    DesktopLook look{*settings, [this](const std::string& name) { useIconTheme(name); }};
    LauncherWindow window;
    std::unique_ptr<WindowManagement> management = makeSessionWindowManagement(*running);
    std::unique_ptr<SessionStatusItemHosts> hosts = makeSessionStatusItemHosts(presence);
    TavoLauncherMenuController controller{
        {.window = window, .management = *management, .hosts = *hosts, .reachable = [this] {
             return presence.reachable();
         }}};
    std::shared_ptr<void> signals = listenForTermination([this] {
        window.hide();
        static_cast<LauncherQApplication*>(qApp)->endAtOnce();
    });
};

TavoLauncherApp::TavoLauncherApp(const StartEnvironment& environment, const SessionBus& bus,
                                 std::unique_ptr<ApplicationSource> applications,
                                 std::shared_ptr<DesktopEntryIndex> listed,
                                 SingleInstance& presence) {
    installAccessibleItems();
    QCoreApplication::installTranslator(new ToolkitTexts(qApp));
    parts_ = std::make_unique<Parts>(environment, bus, std::move(applications), std::move(listed),
                                     presence);
    useApplicationIconAfterFirstFrame(parts_->window);
    afterFirstFrame(parts_->window, [this] { parts_->controller.applicationDidFinishLaunching(); });
}

TavoLauncherApp::~TavoLauncherApp() = default;

void TavoLauncherApp::show(const std::string& activationToken) {
    parts_->look.awaitDesktop();
    // The startup id the toolkit itself answers.
    parts_->controller.showLauncher({.startupId = "", .activationToken = activationToken});
}

}  // namespace tavo
