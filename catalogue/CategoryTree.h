// The order, the depth and the repair of the category tree, as functions of a list.
#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "catalogue/LauncherCategory.h"
#include "support/Text.h"

namespace tavo {

// `fixed` first, then `custom` with each parent directly before its children, siblings in stored
// order. Categories that no walk from the top reaches (an unknown parent, a circle of parents)
// follow at the end in stored order. Of several categories with one id only the first met is
// walked to.
std::vector<LauncherCategory> inSidebarOrder(const std::vector<LauncherCategory>& fixed,
                                             const std::vector<LauncherCategory>& custom);

// How many parents `category` has above it in `custom`, at most 4: deeper nesting is not indented
// further. A circle of parents ends the count where it closes.
int depthOf(const LauncherCategory& category, const std::vector<LauncherCategory>& custom);

// The same for many categories of one list, each in the time of a few look-ups. The list outlives
// it unchanged.
class CategoryDepths {
public:
    explicit CategoryDepths(const std::vector<LauncherCategory>& custom);

    [[nodiscard]] int of(const LauncherCategory& category) const;

private:
    std::unordered_map<std::string_view, const LauncherCategory*> firstOfID_;
};

// An edited list made fit to keep: names trimmed, categories without a name dropped, of names
// that differ only by case or diacritics the first one kept, and a parent kept only when it
// stands earlier in the list.
std::vector<LauncherCategory> repaired(const std::vector<LauncherCategory>& edited,
                                       const TextRules& text);

}  // namespace tavo
