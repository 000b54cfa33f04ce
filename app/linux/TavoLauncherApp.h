// The composition root: adapters, model, window.
#pragma once

#include <memory>
#include <string>

namespace tavo {

class ApplicationSource;
class DesktopEntryIndex;
class SingleInstance;
class StartEnvironment;
struct SessionBus;

// Everything that runs, made in order of need and ended in the reverse. Made after the
// application object, a LauncherQApplication; main thread.
class TavoLauncherApp {
public:
    // `environment` is what applications will be started with; `applications` may be scanning
    // already, and leaves in `listed` what it found. `presence` outlives this.
    TavoLauncherApp(const StartEnvironment& environment, const SessionBus& bus,
                    std::unique_ptr<ApplicationSource> applications,
                    std::shared_ptr<DesktopEntryIndex> listed, SingleInstance& presence);
    ~TavoLauncherApp();

    // Shows the launcher window for the first time, by the activation token that this process was
    // started with; what the desktop is to know besides follows after its first frame.
    void show(const std::string& activationToken);

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace tavo
