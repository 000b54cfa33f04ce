#include "catalogue/Favorites.h"

#include <algorithm>
#include <string_view>

#include "platform/DefaultsStore.h"

namespace tavo {
namespace {

// Older than the version suffixes of the model's keys; it never gets one.
constexpr std::string_view kFavoritesKey = "mirvo.favoriteApps";

}  // namespace

Favorites& Favorites::shared() {
    static Favorites favorites;
    return favorites;
}

PathSet Favorites::urls() const {
    const StringArray stored = store_->stringArray(kFavoritesKey).value_or(StringArray{});
    return {stored.begin(), stored.end()};
}

void Favorites::toggle(const std::string& path) {
    PathSet paths = urls();
    if (paths.erase(path) == 0) {
        paths.insert(path);
    }
    StringArray stored(paths.begin(), paths.end());
    std::sort(stored.begin(), stored.end());
    store_->set(kFavoritesKey, stored);
}

}  // namespace tavo
