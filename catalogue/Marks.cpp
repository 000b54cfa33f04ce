#include <algorithm>
#include <set>

#include "catalogue/LauncherModel.h"

namespace tavo {

bool LauncherModel::isHidden(const AppItem& app) const {
    return hiddenPaths_->contains(app.url.path);
}

bool LauncherModel::isAssigned(const AppItem& app, const LauncherCategory& category) const {
    const auto assigned = assignments_->find(category.id);
    return assigned != assignments_->end() &&
           std::find(assigned->second.begin(), assigned->second.end(), app.url.path) !=
               assigned->second.end();
}

void LauncherModel::toggleHidden(const AppItem& app) {
    hiddenPaths_.change([&](PathSet& paths) {
        if (paths.erase(app.url.path) == 0) {
            paths.insert(app.url.path);
        }
    });
    StringArray stored(hiddenPaths_->begin(), hiddenPaths_->end());
    std::sort(stored.begin(), stored.end());
    platform_.defaults.set(kHiddenKey, stored);
    objectWillChange.emit();
}

void LauncherModel::toggleFavorite(const AppItem& app) {
    Favorites::shared().toggle(app.url.path);
    // The favourites are no property of the model: without this nobody would draw them again.
    objectWillChange.emit();
}

void LauncherModel::toggleAssignment(const AppItem& app, const LauncherCategory& category) {
    assignments_.change([&](Assignments& assignments) {
        StringArray& assigned = assignments[category.id];
        std::set<std::string> paths(assigned.begin(), assigned.end());
        if (paths.erase(app.url.path) == 0) {
            paths.insert(app.url.path);
        }
        // The entry stays, also when nothing is left in it.
        assigned.assign(paths.begin(), paths.end());
    });
    saveAssignments();
    objectWillChange.emit();
}

}  // namespace tavo
