#include "catalogue/LauncherCategory.h"

namespace tavo {

std::vector<LauncherCategory> makeFixedCategories() {
    return {
        {std::string(kAllID), "Tutte"},
        {std::string(kFavoritesID), "Preferite"},
        {std::string(kRecentID), "Recenti"},
        {std::string(kHiddenID), "Nascoste"},
    };
}

std::vector<LauncherCategory> makeDefaultCategories() {
    return {{"work", "Lavoro"}, {"creative", "Creatività"}, {"utility", "Utility"}};
}

}  // namespace tavo

std::size_t std::hash<tavo::LauncherCategory>::operator()(
    const tavo::LauncherCategory& category) const noexcept {
    const auto combine = [](std::size_t seed, std::size_t value) {
        return seed ^ (value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2));
    };
    std::size_t seed = std::hash<std::string>{}(category.id);
    seed = combine(seed, std::hash<std::string>{}(category.name));
    return combine(seed, std::hash<std::optional<std::string>>{}(category.parentID));
}
