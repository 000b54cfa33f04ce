#include "platform/linux/bundles/BundleFolder.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include <sys/stat.h>

#include "platform/linux/bundles/PropertyList.h"
#include "platform/posix/RelativePath.h"

namespace tavo {
namespace {

// An extension never has a space, nor a character that sets the direction of text: U+061C, U+200E,
// U+200F, U+202A to U+202E, U+2066 to U+2069.
constexpr std::array<std::string_view, 13> kNeverInExtensions = {
    " ",      "\u061C", "\u200E", "\u200F", "\u202A", "\u202B", "\u202C",
    "\u202D", "\u202E", "\u2066", "\u2067", "\u2068", "\u2069"};

using Strings = std::map<std::string, std::string>;

std::string nameWithoutExtension(const std::string& path) {
    std::string name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == name.size()) {
        return name;
    }
    const std::string_view extension = std::string_view(name).substr(dot + 1);
    const bool none = std::any_of(
        kNeverInExtensions.begin(), kNeverInExtensions.end(),
        [extension](std::string_view mark) { return extension.find(mark) != extension.npos; });
    return none ? name : name.substr(0, dot);
}

std::optional<std::string> valueOf(const Strings& strings, const char* key) {
    const auto found = strings.find(key);
    return found == strings.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> findExecutable(const std::string& bundle, const std::string& name) {
    if (!staysInside(name)) {
        return std::nullopt;
    }
    for (const char* const folder : {"/Contents/MacOS/", "/Contents/", "/"}) {
        std::string path = bundle + folder + name;
        struct stat status = {};
        if (::stat(path.c_str(), &status) == 0) {
            return path;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<BundleFacts> readBundleFolder(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return std::nullopt;
    }
    const Strings strings = readPropertyListStrings(path + "/Contents/Info.plist");
    BundleFacts facts;
    facts.identifier = valueOf(strings, "CFBundleIdentifier");
    facts.signature = valueOf(strings, "CFBundleSignature");
    facts.executablePath = findExecutable(
        path, valueOf(strings, "CFBundleExecutable").value_or(nameWithoutExtension(path)));
    return facts;
}

}  // namespace tavo
