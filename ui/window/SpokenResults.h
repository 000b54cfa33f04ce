// What screen readers are told of results that the keyboard focus does not show.
#pragma once

#include "catalogue/LauncherModel.h"
#include "ui/accessibility/Announcer.h"

namespace tavo {

// The texts for an Announcer, read from the model. To be called after each action; costs nothing
// while no screen reader is connected. Main thread.
class SpokenResults {
public:
    // Both outlive it.
    SpokenResults(const LauncherModel& model, QWidget& speaker);

    // Another search or another category: how many applications there are, and the first.
    void found();

    void reloaded();
    void hiddenToggled(const AppItem& app);
    void assignmentToggled(const AppItem& app, const LauncherCategory& category);
    // Says nothing where the tile stays and shows the star.
    void favoriteToggled(const AppItem& app);

private:
    void say(QStringView what, const AppItem& app);

    const LauncherModel& model_;
    Announcer announcer_;
};

}  // namespace tavo
