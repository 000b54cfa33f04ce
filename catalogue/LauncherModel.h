// Everything the launcher knows and can do. Views read it, call its operations, and draw again
// when it changes; they keep no copy.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/AppItem.h"
#include "catalogue/Favorites.h"
#include "catalogue/LauncherCategory.h"
#include "platform/DefaultsStore.h"
#include "platform/Platform.h"
#include "platform/RunningApplications.h"
#include "support/Published.h"
#include "support/Signal.h"
#include "support/Text.h"

namespace tavo {

struct BundleFacts;

// The one model. Main thread only; no operation throws or fails. What the user arranges is on
// disk when the operation that changed it returns, unless the store was refused; what the store
// holds and cannot be read is taken as absent and left alone until its key is next written. Nothing
// is written at start.
//
// Its operations are defined in the file of their subject: Discovery.cpp, CategoryTree.cpp,
// Search.cpp, Marks.cpp, launching/Opening.cpp, launching/AppletRecovery.cpp.
class LauncherModel {
public:
    // Loads what is stored and scans for applications before it returns. Everything in `platform`
    // outlives the model; Favorites::shared() reads the same store.
    LauncherModel(Platform platform, TextRules text);
    ~LauncherModel();
    LauncherModel(const LauncherModel&) = delete;
    LauncherModel& operator=(const LauncherModel&) = delete;

    // --- Changes -------------------------------------------------------------------------------

    // Comes before each change of the state below, often several times for one operation: redraw
    // once per turn of the event loop, reading everything again.
    Signal<> objectWillChange;

    // --- State for views -----------------------------------------------------------------------

    // The applications found by the last scan, by name.
    [[nodiscard]] const std::vector<AppItem>& apps() const { return *apps_; }
    [[nodiscard]] const std::string& query() const { return *query_; }
    [[nodiscard]] const std::string& selectedCategoryID() const { return *selectedCategoryID_; }
    // The text of the last failed opening, until somebody clears it.
    [[nodiscard]] const std::optional<std::string>& launchError() const { return *launchError_; }
    // The user's categories in stored order, sub-categories included.
    [[nodiscard]] const std::vector<LauncherCategory>& customCategories() const {
        return *customCategories_;
    }
    [[nodiscard]] const std::vector<LauncherCategory>& fixedCategories() const {
        return fixedCategories_;
    }

    // The applications to show now: selected view, then search. Computed on every call; "recent"
    // is in order of use, everything else in the order of apps().
    [[nodiscard]] std::vector<AppItem> filtered() const;

    // All categories in the order of the sidebar, and how far to indent each (0 to 4).
    [[nodiscard]] std::vector<LauncherCategory> sidebarCategories() const;
    [[nodiscard]] int categoryDepth(const LauncherCategory& category) const;

    // The keywords of a category as the user typed them; empty when it has none.
    [[nodiscard]] std::string ruleText(const LauncherCategory& category) const;

    [[nodiscard]] bool isHidden(const AppItem& app) const;
    // Whether the user put it there by hand; keywords do not count.
    [[nodiscard]] bool isAssigned(const AppItem& app, const LauncherCategory& category) const;

    // --- Operations ----------------------------------------------------------------------------

    // Scans again and replaces apps().
    void reload();

    void setQuery(std::string query) { query_.set(std::move(query)); }
    void setSelectedCategoryID(std::string id) { selectedCategoryID_.set(std::move(id)); }
    void clearLaunchError() { launchError_.set(std::nullopt); }

    // Takes over an edited list and the keywords by category id, both repaired as they need it.
    void setCategoriesAndRules(const std::vector<LauncherCategory>& categories,
                               const StringDictionary& rules);

    void toggleHidden(const AppItem& app);
    void toggleFavorite(const AppItem& app);
    void toggleAssignment(const AppItem& app, const LauncherCategory& category);

    // Records `app` as the most recent one, then brings it to the front when it runs or starts
    // it. A failure becomes launchError() later. An applet (a bundle that merely starts a script)
    // runs when its script does; looking for that waits for the process finder.
    void open(const AppItem& app);

private:
    // Category id to the paths assigned by hand, in no order.
    using Assignments = std::map<std::string, StringArray>;

    static constexpr std::string_view kCategoriesKey = "mirvo.customCategories.v1";
    static constexpr std::string_view kAssignmentsKey = "mirvo.categoryAssignments.v1";
    static constexpr std::string_view kHiddenKey = "mirvo.hiddenApps.v1";
    static constexpr std::string_view kRecentsKey = "mirvo.recentApps.v1";
    static constexpr std::string_view kRulesKey = "mirvo.categoryRules.v1";

    void load();
    void saveCategories();
    void saveAssignments();
    void setCategories(const std::vector<LauncherCategory>& categories);

    [[nodiscard]] std::vector<const AppItem*> baseList() const;
    class Membership;

    void recordAsRecent(const std::string& path);
    [[nodiscard]] bool bringForward(const AppItem& app, const BundleFacts& facts, bool applet);

    // The interpreter that runs the script of an applet, found by the script's name.
    [[nodiscard]] std::optional<RunningApplication> runningPythonSidecar(const AppItem& app);
    // Brings it forward, now or at one of the next checks; a message when there is none at the
    // last of them.
    void focusPythonSidecar(const AppItem& app, int attemptsRemaining);

    void reportLaunchError(std::string message);

    Platform platform_;
    TextRules text_;

    Published<std::vector<AppItem>> apps_{objectWillChange, {}};
    Published<std::string> query_{objectWillChange, {}};
    Published<std::string> selectedCategoryID_{objectWillChange, std::string(kAllID)};
    Published<std::optional<std::string>> launchError_{objectWillChange, std::nullopt};
    Published<std::vector<LauncherCategory>> customCategories_{objectWillChange, {}};
    Published<Assignments> assignments_{objectWillChange, {}};
    Published<PathSet> hiddenPaths_{objectWillChange, {}};
    Published<StringArray> recentPaths_{objectWillChange, {}};  // the most recent first
    Published<StringDictionary> categoryRules_{objectWillChange, {}};
    const std::vector<LauncherCategory> fixedCategories_ = makeFixedCategories();

    // What answers from elsewhere hold on to; it ends with the model, and they then do nothing.
    const std::shared_ptr<LauncherModel*> alive_ = std::make_shared<LauncherModel*>(this);
};

}  // namespace tavo
