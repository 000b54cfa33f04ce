// The whole content of the launcher window.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

#include "catalogue/LauncherModel.h"
#include "ui/grid/IconLoader.h"

class QLabel;

namespace tavo {

class AlertSheet;
struct AppTile;
class CategoryEditor;
class SidebarList;
class SearchField;
class SymbolButton;
class TileGrid;

// Owns the model for its own lifetime and lays out the sidebar beside toolbar, grid and footer.
// It holds no rules of the catalogue: each action is one call on the model, and whatever it shows
// is read from the model again after a change, once per turn of the event loop. Main thread.
class LauncherView final : public QWidget {
public:
    // What the view needs of the world; all outlive it.
    struct World {
        Platform platform;
        TextRules text;
        IconSource& icons;
        MainQueue& mainQueue;
    };

    LauncherView(const World& world, QWidget* parent);
    ~LauncherView() override;

    // The icons may have changed.
    void refreshIcons();

    // Called when the close button was pressed, and when Esc was pressed with nothing to clear.
    std::function<void()> onClose;
    std::function<void()> onEscape;
    // Called with the address of the link that was pressed.
    std::function<void(const std::string& address)> onLink;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* makeSidebar();
    QWidget* makeEditButton(QWidget* sidebar);
    QWidget* makeToolbar();
    QWidget* makeFooter();
    [[nodiscard]] AppTile makeTile(const AppItem& app);

    // Draws again soon, however often it is asked for.
    void refreshSoon();
    void refresh();
    void refreshSheets();
    void keepKeyboard();
    CategoryEditor* makeCategoryEditor();
    void showSuggestions();
    void reload();

    TextRules text_;
    LauncherModel model_;
    IconLoader icons_;
    Subscription modelChanges_;
    bool refreshPending_ = false;
    // What the grid's list answered last: another question starts at the top again.
    std::string shownQuery_;
    std::string shownCategoryID_;
    PathSet favorites_;  // as of the last refresh, for the tiles in view

    SidebarList* categories_ = nullptr;
    SearchField* search_ = nullptr;
    SymbolButton* suggestions_ = nullptr;
    SymbolButton* closeButton_ = nullptr;
    TileGrid* grid_ = nullptr;
    QWidget* footer_ = nullptr;
    QLabel* count_ = nullptr;
    // Whether the user edits the categories.
    bool showingCategoryEditor_ = false;
    CategoryEditor* editor_ = nullptr;  // while it is shown
    AlertSheet* alert_ = nullptr;       // while it is shown
};

}  // namespace tavo
