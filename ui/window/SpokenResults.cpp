#include "ui/window/SpokenResults.h"

#include "catalogue/Favorites.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

QString countText(std::size_t count) {
    return QString::number(count) + texts::kCountSuffix.toString();
}

}  // namespace

SpokenResults::SpokenResults(const LauncherModel& model, QWidget& speaker)
    : model_(model), announcer_(speaker) {}

void SpokenResults::found() {
    announcer_.say([this] {
        const std::vector<AppItem> apps = model_.filtered();
        if (apps.empty()) {
            return texts::kNoApps.toString();
        }
        const QString before =
            apps.size() == 1 ? QStringLiteral(": ") : texts::kFirstApp.toString();
        return countText(apps.size()) + before + displayText(apps.front().name);
    });
}

void SpokenResults::reloaded() {
    announcer_.say(
        [this] { return texts::kReloaded.toString() + countText(model_.filtered().size()); });
}

void SpokenResults::hiddenToggled(const AppItem& app) {
    say(model_.isHidden(app) ? texts::kIsHidden : texts::kIsShown, app);
}

void SpokenResults::assignmentToggled(const AppItem& app, const LauncherCategory& category) {
    const QStringView what =
        model_.isAssigned(app, category) ? texts::kAssignedTo : texts::kRemovedFrom;
    say(what.toString() + displayText(category.name) + QStringLiteral(": "), app);
}

void SpokenResults::favoriteToggled(const AppItem& app) {
    if (model_.selectedCategoryID() == kFavoritesID) {
        say(Favorites::shared().urls().contains(app.url.path) ? texts::kHasBecomeFavorite
                                                              : texts::kIsNoFavorite,
            app);
    }
}

void SpokenResults::say(QStringView what, const AppItem& app) {
    announcer_.say([text = what.toString() + displayText(app.name)] { return text; });
}

}  // namespace tavo
