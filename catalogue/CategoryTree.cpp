#include "catalogue/CategoryTree.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "catalogue/LauncherModel.h"
#include "platform/DefaultsStore.h"

namespace tavo {
namespace {

constexpr int kDeepestIndentation = 4;

// `find` answers the category of an id, or null.
template<typename Find>
int countParents(const LauncherCategory& category, const Find& find) {
    int depth = 0;
    std::unordered_set<std::string_view> seen;
    const std::optional<std::string>* parent = &category.parentID;
    // Past the cap the answer no longer changes.
    while (depth < kDeepestIndentation && *parent && seen.insert(**parent).second) {
        const LauncherCategory* const found = find(**parent);
        if (found == nullptr) {
            break;
        }
        ++depth;
        parent = &found->parentID;
    }
    return depth;
}

}  // namespace

std::vector<LauncherCategory> inSidebarOrder(const std::vector<LauncherCategory>& fixed,
                                             const std::vector<LauncherCategory>& custom) {
    std::vector<LauncherCategory> order = fixed;
    order.reserve(fixed.size() + custom.size());

    std::unordered_map<std::string_view, std::vector<const LauncherCategory*>> childrenOf;
    std::vector<const LauncherCategory*> topLevel;
    for (const LauncherCategory& category : custom) {
        (category.parentID ? childrenOf[*category.parentID] : topLevel).push_back(&category);
    }

    // Stored trees may be deeper than any stack should be, so the walk keeps its own: the
    // categories still to visit, the next one last.
    std::unordered_set<std::string_view> visited;
    std::vector<const LauncherCategory*> waiting(topLevel.rbegin(), topLevel.rend());
    while (!waiting.empty()) {
        const LauncherCategory* const category = waiting.back();
        waiting.pop_back();
        if (!visited.insert(category->id).second) {
            continue;
        }
        order.push_back(*category);
        if (const auto children = childrenOf.find(category->id); children != childrenOf.end()) {
            waiting.insert(waiting.end(), children->second.rbegin(), children->second.rend());
        }
    }
    std::copy_if(custom.begin(), custom.end(), std::back_inserter(order),
                 [&](const LauncherCategory& category) { return !visited.contains(category.id); });
    return order;
}

int depthOf(const LauncherCategory& category, const std::vector<LauncherCategory>& custom) {
    return countParents(category, [&](std::string_view id) -> const LauncherCategory* {
        const auto found = std::find_if(custom.begin(), custom.end(),
                                        [&](const auto& candidate) { return candidate.id == id; });
        return found == custom.end() ? nullptr : &*found;
    });
}

CategoryDepths::CategoryDepths(const std::vector<LauncherCategory>& custom) {
    firstOfID_.reserve(custom.size());
    for (const LauncherCategory& category : custom) {
        firstOfID_.emplace(category.id, &category);
    }
}

int CategoryDepths::of(const LauncherCategory& category) const {
    return countParents(category, [this](std::string_view id) -> const LauncherCategory* {
        const auto found = firstOfID_.find(id);
        return found == firstOfID_.end() ? nullptr : found->second;
    });
}

std::vector<LauncherCategory> repaired(const std::vector<LauncherCategory>& edited,
                                       const TextRules& text) {
    std::vector<LauncherCategory> kept;
    std::unordered_set<std::string> takenNames;
    for (const LauncherCategory& category : edited) {
        const std::string_view name = trimmed(category.name);
        if (!name.empty() && takenNames.insert(text.uniqueKey(name)).second) {
            kept.emplace_back(category.id, std::string(name), category.parentID);
        }
    }
    std::unordered_set<std::string_view> earlierIDs;
    for (LauncherCategory& category : kept) {
        if (category.parentID && !earlierIDs.contains(*category.parentID)) {
            category.parentID.reset();
        }
        earlierIDs.insert(category.id);
    }
    return kept;
}

std::vector<LauncherCategory> LauncherModel::sidebarCategories() const {
    return inSidebarOrder(fixedCategories_, *customCategories_);
}

int LauncherModel::categoryDepth(const LauncherCategory& category) const {
    return depthOf(category, *customCategories_);
}

std::string LauncherModel::ruleText(const LauncherCategory& category) const {
    const auto rule = categoryRules_->find(category.id);
    return rule == categoryRules_->end() ? std::string() : rule->second;
}

void LauncherModel::setCategoriesAndRules(const std::vector<LauncherCategory>& categories,
                                          const StringDictionary& rules) {
    // Rules are kept for every category handed in, also for one that the repair drops: a name
    // typed twice by mistake must not cost its keywords. Taken down first, because what was handed
    // in may be the model's own list.
    std::unordered_set<std::string> handedIn;
    for (const LauncherCategory& category : categories) {
        handedIn.insert(category.id);
    }
    setCategories(categories);
    StringDictionary kept;
    for (const auto& [id, rule] : rules) {
        if (handedIn.contains(id) && !trimmed(rule).empty()) {
            kept.emplace(id, rule);
        }
    }
    categoryRules_.set(std::move(kept));
    platform_.defaults.set(kRulesKey, *categoryRules_);
    objectWillChange.emit();
}

void LauncherModel::setCategories(const std::vector<LauncherCategory>& categories) {
    std::vector<LauncherCategory> kept = repaired(categories, text_);
    std::unordered_set<std::string> ids;
    for (const LauncherCategory& category : kept) {
        ids.insert(category.id);
    }
    assignments_.change([&](Assignments& assignments) {
        std::erase_if(assignments, [&](const auto& entry) { return !ids.contains(entry.first); });
    });
    customCategories_.set(std::move(kept));

    const bool selectionStands =
        ids.contains(*selectedCategoryID_) ||
        std::any_of(fixedCategories_.begin(), fixedCategories_.end(),
                    [&](const auto& fixed) { return fixed.id == *selectedCategoryID_; });
    if (!selectionStands) {
        selectedCategoryID_.set(std::string(kAllID));
    }
    saveCategories();
    saveAssignments();
}

}  // namespace tavo
