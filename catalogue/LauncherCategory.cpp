#include "catalogue/LauncherCategory.h"

#include "support/Json.h"

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

std::optional<std::string> encodeCategories(const std::vector<LauncherCategory>& categories) {
    std::vector<StringDictionary> objects;
    objects.reserve(categories.size());
    for (const LauncherCategory& category : categories) {
        StringDictionary& object = objects.emplace_back();
        object["id"] = category.id;
        object["name"] = category.name;
        if (category.parentID) {
            object["parentID"] = *category.parentID;
        }
    }
    return json::writeArray(objects);
}

std::optional<std::vector<LauncherCategory>> decodeCategories(std::string_view json) {
    const auto objects = json::readObjectArray(json, {"id", "name", "parentID"});
    if (!objects) {
        return std::nullopt;
    }
    std::vector<LauncherCategory> categories;
    categories.reserve(objects->size());
    for (const StringDictionary& object : *objects) {
        const auto id = object.find("id");
        const auto name = object.find("name");
        const auto parent = object.find("parentID");
        if (id == object.end() || name == object.end()) {
            return std::nullopt;
        }
        categories.emplace_back(
            id->second, name->second,
            parent == object.end() ? std::nullopt : std::optional(parent->second));
    }
    return categories;
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
