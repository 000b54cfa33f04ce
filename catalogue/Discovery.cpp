#include <array>
#include <string>
#include <string_view>
#include <unordered_set>

#include "catalogue/BundleName.h"
#include "catalogue/LauncherModel.h"
#include "platform/ApplicationSource.h"
#include "platform/FileManager.h"

namespace tavo {
namespace {

std::string appended(std::string_view folder, std::string_view entry) {
    std::string path(folder);
    if (!path.ends_with('/')) {
        path += '/';
    }
    return path.append(entry);
}

}  // namespace

void LauncherModel::reload() {
    const std::array<std::string, 4> folders = {
        "/Applications",
        "/System/Applications",
        "/System/Applications/Utilities",
        appended(platform_.files.homeDirectory(), "Applications"),
    };

    std::vector<FoundApplication> found;
    std::unordered_set<std::string> taken;
    for (const std::string& folder : folders) {
        // A folder that cannot be listed has nothing to contribute; that is no error.
        for (const std::string& entry :
             platform_.files.contentsOfDirectory(folder).value_or(std::vector<std::string>{})) {
            std::optional<std::string> name = bundleName(entry);
            std::string path = appended(folder, entry);
            if (name && isUtf8(path) && taken.insert(path).second) {
                found.push_back({std::move(*name), std::move(path)});
            }
        }
    }
    for (FoundApplication& application : platform_.applications.applications()) {
        if (taken.insert(application.path).second) {
            found.push_back(std::move(application));
        }
    }

    const std::vector<std::string_view> names = [&] {
        std::vector<std::string_view> views;
        views.reserve(found.size());
        for (const FoundApplication& application : found) {
            views.push_back(application.name);
        }
        return views;
    }();
    std::vector<AppItem> apps;
    apps.reserve(found.size());
    for (const std::size_t position : text_.sortedOrder(names)) {
        apps.emplace_back(std::move(found[position].name),
                          FileUrl{std::move(found[position].path)});
    }
    apps_.set(std::move(apps));
}

}  // namespace tavo
