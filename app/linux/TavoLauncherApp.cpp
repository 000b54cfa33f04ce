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
#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/icons/XdgIconSource.h"
#include "platform/linux/instance/SingleInstance.h"
#include "platform/linux/opening/LinuxWorkspace.h"
#include "platform/linux/opening/UrlAssociation.h"
#include "platform/linux/session/SessionCompositing.h"
#include "platform/linux/session/SessionDesktopSettings.h"
#include "platform/linux/session/SessionRunningApplications.h"
#include "platform/linux/session/SessionStatusItemHosts.h"
#include "platform/linux/session/SessionWindowManagement.h"
#include "platform/linux/settings/KdeChanges.h"
#include "platform/linux/store/SqliteDefaultsStore.h"
#include "platform/linux/system/XdgFolders.h"
#include "platform/linux/wayland/WaylandActivationTokens.h"
#include "platform/linux/wayland/WaylandSession.h"
#include "platform/linux/x11/XSettingsWatch.h"
#include "platform/linux/x11/XcbUserTime.h"
#include "platform/posix/PosixChildProcess.h"
#include "platform/posix/PosixFileManager.h"
#include "platform/qt/PlatformTheme.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/TerminationSignals.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/look/AppliedDesktopSettings.h"
#include "ui/look/CursorBlinkTimeout.h"
#include "ui/look/QtTexts.h"
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
    for (const std::string& dataDir : DesktopEntryEnvironment::fromProcess().dataDirs) {
        folders.push_back(dataDir + "/applications");
    }
    return folders;
}

std::optional<std::string> bundleIconFile(const std::string& bundle) {
    const auto values = readPropertyListStrings(bundle + "/Contents/Info.plist");
    const auto icon = values.find("CFBundleIconFile");
    return icon == values.end() ? std::nullopt : std::optional(icon->second);
}

std::unique_ptr<SessionDesktopSettings> desktopSettings(const StartEnvironment& environment,
                                                        bool wayland, SessionBus& bus,
                                                        MainQueue& mainQueue) {
    const XdgFolders folders = XdgFolders::fromProcess();
    return makeSessionDesktopSettings({.config = folders.configDirs,
                                       .data = folders.dataDirs,
                                       .desktops = currentDesktops(),
                                       .wayland = wayland},
                                      wayland ? "" : environment.value("DISPLAY").value_or(""), bus,
                                      mainQueue);
}

// Opens a web address. Reports on standard error why it does not open.
void openLink(Workspace& workspace, const std::string& address) {
    const std::string application = applicationForAddress(address);
    if (application.empty()) {
        std::fprintf(stderr, "tavolauncher: no program opens %s\n", address.c_str());
        return;
    }
    workspace.openApplication(
        application, {.address = address},
        [address](const std::optional<RunningApplication>&, const std::optional<Error>& error) {
            if (error) {
                std::fprintf(stderr, "tavolauncher: %s does not open: %s\n", address.c_str(),
                             error->message.c_str());
            }
        });
}

}  // namespace

TavoLauncherApp::TavoLauncherApp(const StartEnvironment& environment, SessionBus& bus,
                                 std::unique_ptr<ApplicationSource> applications,
                                 std::shared_ptr<DesktopEntryIndex> entries,
                                 SingleInstance& instance)
    : instance_(instance), applications_(std::move(applications)) {
    installAccessibleItems();
    QCoreApplication::installTranslator(new QtTexts(qApp));

    mainQueue_ = makeQtMainQueue();
    const bool wayland = isWaylandSession(environment);
    // Early, so that the desktop answers while the other parts are made. The watches come first, so
    // that no change is missed.
    xSettings_ = watchXSettings();
    kde_ = watchKde(bus, *mainQueue_);
    settings_ = desktopSettings(environment, wayland, bus, *mainQueue_);
    defaults_ = makeSqliteDefaultsStore(defaultStoreFile(), mainQueue_.get());
    Favorites::shared().use(*defaults_);
    files_ = makePosixFileManager();
    processes_ = makePosixChildProcess();

    const UserTime userTime = watchXcbUserTime();
    tokens_ = makeWaylandActivationTokens();
    running_ =
        makeSessionRunningApplications(environment, wayland, bus, std::move(entries), userTime);
    workspace_ = makeLinuxWorkspace({.mainQueue = *mainQueue_,
                                     .environment = environment,
                                     .wayland = wayland,
                                     .bus = bus,
                                     .applicationFolders = applicationFolders(),
                                     .userTime = userTime,
                                     .activationToken =
                                         [&tokens = *tokens_](const std::string& identifier) {
                                             return activationToken(tokens, identifier);
                                         },
                                     .running = running_.get()});
    icons_ = makeXdgIconSource(IconEnvironment::fromProcess(wayland), bundleIconFile);

    compositing_ = makeSessionCompositing();
    cursorBlinking_ = std::make_unique<CursorBlinkTimeout>();
    window_ = std::make_unique<LauncherWindow>(*compositing_);
    auto* const view = new LauncherView({.platform = {.defaults = *defaults_,
                                                      .files = *files_,
                                                      .applications = *applications_,
                                                      .workspace = *workspace_,
                                                      .running = *running_,
                                                      .processes = *processes_,
                                                      .mainQueue = *mainQueue_},
                                         .text = TextRules::forUser(),
                                         .icons = icons_,
                                         .mainQueue = *mainQueue_},
                                        window_.get());
    window_->setContent(view);
    look_ = std::make_unique<AppliedDesktopSettings>(
        *settings_, DesktopSettingUses{.iconTheme =
                                           [this, view](const std::string& name) {
                                               icons_->preferTheme(name);
                                               view->refreshIcons();
                                           },
                                       .doubleClickDistance = &setDoubleClickDistance,
                                       .cursorBlinkTime =
                                           [this](std::optional<std::chrono::milliseconds> time) {
                                               cursorBlinking_->setBlinkTime(time);
                                           }});
    const auto changed = [this, view] {
        settings_->readAgain();
        view->refreshIcons();
    };
    if (xSettings_) {
        desktopChanges_.push_back(xSettings_->changed.subscribe(changed));
    }
    desktopChanges_.push_back(kde_->changed.subscribe(changed));
    management_ = makeSessionWindowManagement(environment);
    hosts_ = makeSessionStatusItemHosts(bus, *mainQueue_);
    controller_ = std::make_unique<TavoLauncherMenuController>(
        *window_, *management_, *hosts_, [&instance] { return instance.reachable(); });

    // Only here does everything exist that events may reach.
    view->onClose = [this] { controller_->closeLauncher(); };
    view->onEscape = [this] { controller_->escape(); };
    view->onLink = [this](const std::string& address) { openLink(*workspace_, address); };
    window_->onClose = [this] { controller_->closeLauncher(); };
    window_->onShownAgain = [view] { view->startSearchAnew(); };
    window_->onQuit = [this] { controller_->quit(); };
    window_->onAnother = [this] { management_->prepareToShow(window_->winId(), {}); };
    useApplicationIconAfterFirstFrame(*window_);
    afterFirstFrame(*window_, [this] { controller_->applicationDidFinishLaunching(); });
    terminationSignals_ = listenForTermination([this] {
        window_->hide();
        static_cast<LauncherQApplication*>(qApp)->endAtOnce();
    });
    instance_.serve(
        *mainQueue_,
        {.activated = [this](const StartRequest& request) { controller_->showLauncher(request); },
         .superseded = [this] { controller_->quit(); }});
}

TavoLauncherApp::~TavoLauncherApp() {
    instance_.stopServing();
}

void TavoLauncherApp::show(const std::string& activationToken) {
    look_->awaitDesktop();
    // Without the startup id, whose startup notification Qt itself ends.
    controller_->showLauncher({.startupId = "", .activationToken = activationToken});
}

}  // namespace tavo
