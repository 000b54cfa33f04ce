#include "catalogue/LauncherModel.h"

#include "support/Json.h"

namespace tavo {

LauncherModel::LauncherModel(Platform platform, TextRules text)
    : platform_(platform), text_(std::move(text)) {
    load();
    reload();
}

LauncherModel::~LauncherModel() = default;

void LauncherModel::load() {
    const DefaultsStore& defaults = platform_.defaults;

    std::optional<std::vector<LauncherCategory>> categories;
    if (const auto data = defaults.data(kCategoriesKey)) {
        categories = decodeCategories(*data);
    }
    customCategories_.set(categories ? std::move(*categories) : makeDefaultCategories());

    if (const auto data = defaults.data(kAssignmentsKey)) {
        assignments_.set(json::readStringArrayDictionary(*data).value_or(Assignments{}));
    }
    const StringArray hidden = defaults.stringArray(kHiddenKey).value_or(StringArray{});
    hiddenPaths_.set({hidden.begin(), hidden.end()});
    recentPaths_.set(defaults.stringArray(kRecentsKey).value_or(StringArray{}));
    categoryRules_.set(defaults.stringDictionary(kRulesKey).value_or(StringDictionary{}));
}

void LauncherModel::saveCategories() {
    if (auto encoded = encodeCategories(*customCategories_)) {
        platform_.defaults.set(kCategoriesKey, Data{std::move(*encoded)});
    }
}

void LauncherModel::saveAssignments() {
    if (auto encoded = json::write(*assignments_)) {
        platform_.defaults.set(kAssignmentsKey, Data{std::move(*encoded)});
    }
}

}  // namespace tavo
