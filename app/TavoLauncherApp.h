// The composition root: adapters, model, window.
#pragma once

#include <memory>

namespace tavo {

class ApplicationSource;
class StartEnvironment;

// Everything that runs, made in order of need and ended in the reverse. Made after the
// application object; main thread.
class TavoLauncherApp {
public:
    // `environment` is what applications will be started with; `applications` may be scanning
    // already.
    TavoLauncherApp(StartEnvironment environment, std::unique_ptr<ApplicationSource> applications);
    ~TavoLauncherApp();

    // Shows the launcher window.
    void show();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace tavo
