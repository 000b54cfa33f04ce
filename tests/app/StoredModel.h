// The model over the real defaults store; all its other ports are fakes.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/Favorites.h"
#include "catalogue/LauncherModel.h"
#include "platform/linux/store/SqliteDefaultsStore.h"
#include "tests/fakes/FakeApplicationSource.h"
#include "tests/fakes/FakeChildProcess.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/FakeRunningApplications.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualMainQueue.h"

namespace tavo {

class StoredModel {
public:
    explicit StoredModel(const std::string& file) : store_(makeSqliteDefaultsStore(file)) {
        Favorites::shared().use(*store_);
        model_ = std::make_unique<LauncherModel>(Platform{.defaults = *store_,
                                                          .files = files_,
                                                          .applications = applications_,
                                                          .workspace = workspace_,
                                                          .running = running_,
                                                          .processes = processes_,
                                                          .mainQueue = mainQueue_},
                                                 TextRules("it_IT"));
    }

    LauncherModel& operator*() { return *model_; }
    LauncherModel* operator->() { return model_.get(); }

private:
    std::unique_ptr<DefaultsStore> store_;
    FakeFileManager files_;
    FakeApplicationSource applications_;
    FakeWorkspace workspace_;
    FakeRunningApplications running_;
    FakeChildProcess processes_;
    ManualMainQueue mainQueue_;
    std::unique_ptr<LauncherModel> model_;
};

// The application of mark `number`. A mark is a change that the model stores: it hides, favours or
// assigns an application of its own, or adds a category with a keyword.
inline AppItem markedApp(int number) {
    return {"App " + std::to_string(number), {"/Applications/" + std::to_string(number) + ".app"}};
}

inline const LauncherCategory kMarkCategory{"work", "Lavoro"};

inline LauncherCategory markedCategory(int number) {
    return {"category " + std::to_string(number), "Categoria " + std::to_string(number)};
}

// The model writes the keyword last: a store that holds it holds the whole category.
inline void addMarkedCategory(LauncherModel& model, int number) {
    std::vector<LauncherCategory> categories = model.customCategories();
    categories.push_back(markedCategory(number));
    StringDictionary rules;
    for (const LauncherCategory& category : categories) {
        rules[category.id] = model.ruleText(category);
    }
    rules[markedCategory(number).id] = "keyword " + std::to_string(number);
    model.setCategoriesAndRules(categories, rules);
}

inline void setMark(LauncherModel& model, int number) {
    switch (number % 4) {
        case 3:
            addMarkedCategory(model, number);
            break;
        case 0:
            model.toggleHidden(markedApp(number));
            break;
        case 1:
            model.toggleFavorite(markedApp(number));
            break;
        default:
            model.toggleAssignment(markedApp(number), kMarkCategory);
    }
}

inline bool hasMark(const LauncherModel& model, int number) {
    const AppItem app = markedApp(number);
    switch (number % 4) {
        case 3:
            return model.ruleText(markedCategory(number)) == "keyword " + std::to_string(number) &&
                   std::any_of(model.customCategories().begin(), model.customCategories().end(),
                               [&](const auto& one) { return one == markedCategory(number); });
        case 0:
            return model.isHidden(app);
        case 1:
            return Favorites::shared().urls().contains(app.url.path);
        default:
            return model.isAssigned(app, kMarkCategory);
    }
}

}  // namespace tavo
