// Pictures of applications from the session's icon theme, from pixmaps and from bundles.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/IconSource.h"
#include "platform/linux/icons/IconEnvironment.h"

namespace tavo {

class XdgIconSource : public IconSource {
public:
    // The theme that the settings portal names, for sessions whose own settings manager does not
    // say; "" takes it back. Refreshes. Any thread; returns at once.
    virtual void preferTheme(const std::string& name) = 0;
};

// The CFBundleIconFile that a bundle (its folder) declares, as written.
using BundleIconFile = std::function<std::optional<std::string>(const std::string& bundle)>;

// A path that ends in ".desktop" has the icon that the entry names in the first of the
// environment's languages that has one, else in its plain Icon key; a folder "X.app" has the
// bundle's icon file, and without `bundleIconFile`, or where that has no answer, the first .icns
// among its resources. Any other has the generic one, and so has every one whose icon is missing,
// broken or of absurd size: the theme's "application-x-executable", else one drawn here.
//
// Icons are round(size × scale) pixels, within 1 and 2,048. What was rendered is kept under
// `environment.cacheFolder` and holds until the file it was made from, or any folder that it could
// be in, changes. The first icon, and the first after refresh(), pays for reading the theme.
// `bundleIconFile` is called on the threads that ask for icons, several at once.
std::unique_ptr<XdgIconSource> makeXdgIconSource(IconEnvironment environment,
                                                 BundleIconFile bundleIconFile = {});

}  // namespace tavo
