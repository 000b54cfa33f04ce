// A model in a made-up world, and the words to arrange it.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/Favorites.h"
#include "catalogue/LauncherModel.h"
#include "support/Json.h"
#include "tests/fakes/FakeApplicationSource.h"
#include "tests/fakes/FakeChildProcess.h"
#include "tests/fakes/FakeDefaultsStore.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/FakeRunningApplications.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualMainQueue.h"

namespace tavo {

inline constexpr char kCategoriesKey[] = "mirvo.customCategories.v1";
inline constexpr char kAssignmentsKey[] = "mirvo.categoryAssignments.v1";
inline constexpr char kHiddenKey[] = "mirvo.hiddenApps.v1";
inline constexpr char kRecentsKey[] = "mirvo.recentApps.v1";
inline constexpr char kRulesKey[] = "mirvo.categoryRules.v1";
inline constexpr char kFavoritesKey[] = "mirvo.favoriteApps";

// Stands in for a view: arranges the fakes, makes the model when it is first asked for, and counts
// the model's announcements.
class ModelHarness {
public:
    explicit ModelHarness(std::string_view locale = "en_US") : text_(locale) {
        Favorites::shared().use(defaults);
    }

    FakeDefaultsStore defaults;
    FakeFileManager files;
    FakeApplicationSource applications;
    FakeWorkspace workspace;
    FakeRunningApplications running;
    FakeChildProcess processes;
    ManualMainQueue mainQueue;
    int announcements = 0;

    // Where install() puts an application of this name.
    static std::string pathOf(std::string_view name) {
        return "/Applications/" + std::string(name) + ".app";
    }

    // "App 0", "App 1" and so on.
    static std::vector<std::string> numbered(int count) {
        std::vector<std::string> names;
        for (int i = 0; i < count; ++i) {
            names.push_back("App " + std::to_string(i));
        }
        return names;
    }

    // Applications that the next scan finds.
    void install(const std::vector<std::string>& names) {
        std::vector<std::string> entries;
        for (const std::string& name : names) {
            entries.push_back(name + ".app");
        }
        files.setFolder("/Applications", entries);
    }

    void store(const std::vector<LauncherCategory>& categories) {
        defaults.holdValue(kCategoriesKey, Data{*encodeCategories(categories)});
    }
    // Stores that applications are assigned to categories. `names`: installed applications by
    // category id.
    void storeAssignments(const std::map<std::string, std::vector<std::string>>& names) {
        json::StringArrayDictionary paths;
        for (const auto& [id, assigned] : names) {
            paths[id] = pathsOf(assigned);
        }
        defaults.holdValue(kAssignmentsKey, Data{*json::write(paths)});
    }
    void storeHidden(const std::vector<std::string>& names) {
        defaults.holdValue(kHiddenKey, pathsOf(names));
    }
    void storeRecent(const std::vector<std::string>& names) {
        defaults.holdValue(kRecentsKey, pathsOf(names));
    }
    void storeFavorites(const std::vector<std::string>& names) {
        defaults.holdValue(kFavoritesKey, pathsOf(names));
    }
    void storeRules(const StringDictionary& rules) { defaults.holdValue(kRulesKey, rules); }

    Platform platform() {
        return {.defaults = defaults,
                .files = files,
                .applications = applications,
                .workspace = workspace,
                .running = running,
                .processes = processes,
                .mainQueue = mainQueue};
    }

    LauncherModel& model() {
        if (!model_) {
            model_ = std::make_unique<LauncherModel>(platform(), text_);
            changes_ = model_->objectWillChange.subscribe([this] { ++announcements; });
        }
        return *model_;
    }

    void dropModel() { model_.reset(); }

    // The application of this name from the last scan. It must have been found.
    AppItem app(std::string_view name) {
        const auto& apps = model().apps();
        return *std::find_if(apps.begin(), apps.end(),
                             [&](const AppItem& item) { return item.name == name; });
    }

    // What the grid shows, by name.
    std::vector<std::string> shown() { return namesOf(model().filtered()); }
    std::vector<std::string> shown(const std::string& query) {
        model().setQuery(query);
        return shown();
    }
    std::vector<std::string> shownIn(const std::string& categoryID) {
        model().setSelectedCategoryID(categoryID);
        return shown();
    }

    static std::vector<std::string> namesOf(const std::vector<AppItem>& apps) {
        std::vector<std::string> names;
        for (const AppItem& item : apps) {
            names.push_back(item.name);
        }
        return names;
    }

    static StringArray pathsOf(const std::vector<std::string>& names) {
        StringArray paths;
        for (const std::string& name : names) {
            paths.push_back(pathOf(name));
        }
        return paths;
    }

private:
    TextRules text_;
    std::unique_ptr<LauncherModel> model_;
    Subscription changes_;
};

using Names = std::vector<std::string>;

}  // namespace tavo
