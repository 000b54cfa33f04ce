#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "catalogue/CategoryRule.h"
#include "catalogue/LauncherModel.h"
#include "catalogue/SearchQuery.h"

namespace tavo {

// Which applications belong to at least one of some categories, by hand or by keyword. Asked for
// thousands of applications, so the keywords of all the categories are matched in one go.
class LauncherModel::Membership {
public:
    Membership(const LauncherModel& model, const std::vector<std::string_view>& categoryIDs)
        : keywords_(model.text_, keywordsOfAll(model, categoryIDs)) {
        for (const std::string_view id : categoryIDs) {
            const auto assigned = model.assignments_->find(std::string(id));
            if (assigned != model.assignments_->end()) {
                assigned_.insert(assigned->second.begin(), assigned->second.end());
            }
        }
    }

    [[nodiscard]] bool holds(const AppItem& app) const {
        return (!assigned_.empty() && assigned_.contains(app.url.path)) || ruleMatches(app);
    }

private:
    // Only the name counts, never the path.
    [[nodiscard]] bool ruleMatches(const AppItem& app) const {
        return keywords_.matchesAny(app.name);
    }

    static std::vector<std::string_view> keywordsOfAll(
        const LauncherModel& model, const std::vector<std::string_view>& categoryIDs) {
        std::vector<std::string_view> all;
        for (const std::string_view id : categoryIDs) {
            const auto rule = model.categoryRules_->find(std::string(id));
            if (rule != model.categoryRules_->end()) {
                const auto keywords = keywordsOf(rule->second);
                all.insert(all.end(), keywords.begin(), keywords.end());
            }
        }
        return all;
    }

    std::unordered_set<std::string_view> assigned_;
    ContainmentMatcher keywords_;
};

std::vector<AppItem> LauncherModel::filtered() const {
    const SearchQuery search = parseQuery(*query_);
    std::vector<const AppItem*> shown = baseList();

    if (!search.text.empty()) {
        const std::string_view needle = search.text;
        const ContainmentMatcher matcher(text_, {&needle, 1});
        std::erase_if(shown, [&](const AppItem* app) { return !matcher.matchesAny(app->name); });
    }
    if (!search.category.empty()) {
        std::vector<std::string_view> asked;
        for (const LauncherCategory& category : *customCategories_) {
            if (text_.contains(category.name, search.category) ||
                text_.equalIgnoringCase(category.id, search.category)) {
                asked.push_back(category.id);
            }
        }
        const Membership membership(*this, asked);
        std::erase_if(shown, [&](const AppItem* app) { return !membership.holds(*app); });
    }

    std::vector<AppItem> result;
    result.reserve(shown.size());
    for (const AppItem* const app : shown) {
        result.push_back(*app);
    }
    return result;
}

// What the selected view shows when nothing is searched for.
std::vector<const AppItem*> LauncherModel::baseList() const {
    const auto keep = [this](const auto& belongs) {
        std::vector<const AppItem*> kept;
        kept.reserve(apps_->size());
        for (const AppItem& app : *apps_) {
            if (belongs(app)) {
                kept.push_back(&app);
            }
        }
        return kept;
    };
    const auto visible = [this](const AppItem& app) {
        return hiddenPaths_->empty() || !isHidden(app);
    };
    const std::string& selected = *selectedCategoryID_;

    if (selected == kFavoritesID) {
        const PathSet favorites = Favorites::shared().urls();
        return keep(
            [&](const AppItem& app) { return favorites.contains(app.url.path) && visible(app); });
    }
    if (selected == kRecentID) {
        std::unordered_map<std::string_view, const AppItem*> byPath;
        for (const AppItem& app : *apps_) {
            byPath.emplace(app.url.path, &app);
        }
        std::vector<const AppItem*> recent;
        for (const std::string& path : *recentPaths_) {
            const auto app = byPath.find(path);
            if (app != byPath.end() && visible(*app->second)) {
                recent.push_back(app->second);
            }
        }
        return recent;
    }
    if (selected == kHiddenID) {
        return keep([&](const AppItem& app) { return !visible(app); });
    }
    if (selected == kAllID) {
        return keep(visible);
    }
    // Categories below the selected one are not part of it.
    const Membership membership(*this, {selected});
    return keep([&](const AppItem& app) { return visible(app) && membership.holds(app); });
}

}  // namespace tavo
