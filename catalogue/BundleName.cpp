#include "catalogue/BundleName.h"

namespace tavo {

std::optional<std::string> bundleName(std::string_view entry) {
    constexpr std::string_view kExtension = ".app";
    // A name before the dot is needed: ".app" is a hidden entry, not a bundle without a name.
    if (entry.size() <= kExtension.size() || !entry.ends_with(kExtension)) {
        return std::nullopt;
    }
    return std::string(entry.substr(0, entry.size() - kExtension.size()));
}

}  // namespace tavo
