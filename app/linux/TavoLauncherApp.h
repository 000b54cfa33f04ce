// The composition root: every part of the program is made here.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/Signal.h"

namespace tavo {

class ActivationTokens;
class ApplicationSource;
class ChildProcess;
class Compositing;
class CursorBlinkTimeout;
class DefaultsStore;
class DesktopEntryIndex;
class AppliedDesktopSettings;
class FileManager;
class KdeChanges;
class LauncherView;
class LauncherWindow;
class MainQueue;
class RunningApplications;
class SessionBus;
class SessionDesktopSettings;
class SingleInstance;
class StartEnvironment;
class StatusItemHosts;
class TavoLauncherMenuController;
class WindowManagement;
class Workspace;
class XSettingsWatch;
class XdgIconSource;

// Make it after the application object, a LauncherQApplication. Main thread.
class TavoLauncherApp {
public:
    // Applications are started with `environment`. `applications` may be scanning already, and puts
    // what it finds into `entries`. `bus` and `instance` must outlive this object.
    TavoLauncherApp(const StartEnvironment& environment, SessionBus& bus,
                    std::unique_ptr<ApplicationSource> applications,
                    std::shared_ptr<DesktopEntryIndex> entries, SingleInstance& instance);
    TavoLauncherApp(const TavoLauncherApp&) = delete;
    TavoLauncherApp& operator=(const TavoLauncherApp&) = delete;
    ~TavoLauncherApp();

    // Shows the launcher window for the first time. `activationToken` is the one that this process
    // was started with. The status item follows after the first frame.
    void show(const std::string& activationToken);

private:
    // The parts of the program, in the order in which they are made: each uses some of those above
    // it.
    SingleInstance& instance_;
    const std::unique_ptr<ApplicationSource> applications_;
    std::unique_ptr<MainQueue> mainQueue_;
    std::unique_ptr<XSettingsWatch> xSettings_;
    std::unique_ptr<KdeChanges> kde_;
    std::unique_ptr<SessionDesktopSettings> settings_;
    std::unique_ptr<DefaultsStore> defaults_;
    std::unique_ptr<FileManager> files_;
    std::unique_ptr<ChildProcess> processes_;
    std::unique_ptr<ActivationTokens> tokens_;
    std::unique_ptr<RunningApplications> running_;
    std::unique_ptr<Workspace> workspace_;
    std::shared_ptr<XdgIconSource> icons_;
    std::unique_ptr<Compositing> compositing_;
    std::unique_ptr<CursorBlinkTimeout> cursorBlinking_;
    std::unique_ptr<LauncherWindow> window_;
    std::unique_ptr<AppliedDesktopSettings> look_;
    std::vector<Subscription> desktopChanges_;
    std::unique_ptr<WindowManagement> management_;
    std::unique_ptr<StatusItemHosts> hosts_;
    std::unique_ptr<TavoLauncherMenuController> controller_;
    std::shared_ptr<void> terminationSignals_;
};

}  // namespace tavo
