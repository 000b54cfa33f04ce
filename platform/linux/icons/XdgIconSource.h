// The icons of applications, from the session's icon theme, from pixmaps and from bundles.
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
    // Sets the theme that the settings portal names, for sessions whose XSETTINGS manager names
    // none; "" for no theme. Then refreshes, as refresh() does. Any thread; returns at once.
    virtual void preferTheme(const std::string& name) = 0;
};

// Answers the CFBundleIconFile that the bundle in the folder `bundle` declares, as written.
using BundleIconFile = std::function<std::optional<std::string>(const std::string& bundle)>;

// A path that ends in ".desktop" has the icon that the entry names in the first of the
// environment's languages that has one, else in its plain Icon key. A folder "X.app" has the icon
// file that `bundleIconFile` answers, or without an answer the first .icns file among its
// resources. Any other path has the generic icon, and so has an application whose icon is missing,
// broken, too large or not drawn within a second: "application-x-executable" of the theme, else one
// drawn here. Pictures are drawn by the program `environment.renderer`.
//
// Icons are round(size × scale) pixels, within 1 and 2,048. A rendered icon is kept under
// `environment.cacheFolder` and holds until the file it was made from changes, or any folder in
// which a better one could be. The first call of icon(), and the first one after refresh(), reads
// the theme; concurrent ones wait for it. `bundleIconFile` is called on the threads that ask for
// icons, several at once.
std::unique_ptr<XdgIconSource> makeXdgIconSource(IconEnvironment environment,
                                                 BundleIconFile bundleIconFile = {});

}  // namespace tavo
