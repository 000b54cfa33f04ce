// One category of the sidebar.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/Uuid.h"

namespace tavo {

// A value. Nothing is checked here: an empty name, a repeated id and a parent that does not exist
// are all representable, because stored data may hold them.
struct LauncherCategory {
    // A category of the user's: an id of its own, at the top level.
    explicit LauncherCategory(std::string categoryName)
        : LauncherCategory(Uuid::random().text(), std::move(categoryName)) {}

    LauncherCategory(std::string categoryId, std::string categoryName,
                     std::optional<std::string> parent = std::nullopt)
        : id(std::move(categoryId)), name(std::move(categoryName)), parentID(std::move(parent)) {}

    std::string id;                       // the category's identity; an edit keeps it
    std::string name;                     // as the user reads it
    std::optional<std::string> parentID;  // none: at the top level

    bool operator==(const LauncherCategory&) const = default;
};

// The ids of the built-in views.
inline constexpr std::string_view kAllID = "all";
inline constexpr std::string_view kFavoritesID = "favorites";
inline constexpr std::string_view kRecentID = "recent";
inline constexpr std::string_view kHiddenID = "hidden";

// The built-in views, in the order of the sidebar.
std::vector<LauncherCategory> makeFixedCategories();

// What a user who never edited a category has.
std::vector<LauncherCategory> makeDefaultCategories();

// The stored form of a list of categories: a JSON array of objects with the members "id", "name"
// and, below another category, "parentID". Absent when a string is not UTF-8.
std::optional<std::string> encodeCategories(const std::vector<LauncherCategory>& categories);

// Absent when anything in `json` is not as above; a null "parentID" reads as none, members beyond
// the three are ignored.
std::optional<std::vector<LauncherCategory>> decodeCategories(std::string_view json);

}  // namespace tavo

template<>
struct std::hash<tavo::LauncherCategory> {
    std::size_t operator()(const tavo::LauncherCategory& category) const noexcept;
};
