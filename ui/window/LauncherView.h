// The content of the launcher window.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
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
class Sheet;
class SpokenResults;
class SymbolButton;
class TileGrid;

// Owns the model, and lays out the sidebar beside toolbar, grid and footer. Each action of the user
// is one call of the model. After a change of the model, the view reads everything that it shows
// again, once per turn of the event loop. Main thread.
class LauncherView final : public QWidget {
public:
    // What the view uses. All that it refers to outlives it.
    struct World {
        Platform platform;
        TextRules text;
        std::shared_ptr<IconSource> icons;
        MainQueue& mainQueue;
    };

    LauncherView(const World& world, QWidget* parent);
    ~LauncherView() override;

    // To be called when icons may have changed.
    void refreshIcons();

    // To be called when the window has been shown again: selects the text of the search, so that
    // typing replaces it. The keyboard focus comes to the search field, unless a sheet is open.
    void startSearchAnew();

    // `onClose` is called for the close button, `onEscape` for Esc when there is no search to
    // clear.
    std::function<void()> onClose;
    std::function<void()> onEscape;
    // Called with the address of a link that was pressed.
    std::function<void(const std::string& address)> onLink;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* makeSidebar();
    QWidget* makeEditButton(QWidget* sidebar);
    QWidget* makeToolbar();
    QWidget* makeFooter();
    [[nodiscard]] AppTile makeTile(const AppItem& app);

    // Calls refresh() once in the next turn of the event loop, however often it is called before.
    void refreshSoon();
    void refresh();
    void refreshSheets();
    void close(Sheet& sheet);
    void keepKeyboard();
    CategoryEditor* makeCategoryEditor();
    void showSuggestions();
    void reload();

    TextRules text_;
    LauncherModel model_;
    IconLoader icons_;
    Subscription modelChanges_;
    bool refreshPending_ = false;
    bool iconsPending_ = false;
    // The search and the category that the grid shows. When one changes, the grid scrolls to its
    // start. Both are empty until the grid shows anything.
    std::string shownQuery_;
    std::string shownCategoryID_;
    PathSet favorites_;  // as of the last refresh(); for the tiles

    QWidget* sidebar_ = nullptr;
    SidebarList* categories_ = nullptr;
    SearchField* search_ = nullptr;
    SymbolButton* suggestions_ = nullptr;
    SymbolButton* closeButton_ = nullptr;
    TileGrid* grid_ = nullptr;
    QWidget* footer_ = nullptr;
    QLabel* title_ = nullptr;
    QLabel* count_ = nullptr;
    std::unique_ptr<SpokenResults> spoken_;
    // Whether the category editor should be open.
    bool showingCategoryEditor_ = false;
    CategoryEditor* editor_ = nullptr;  // null while it is not shown
    AlertSheet* alert_ = nullptr;       // null while it is not shown
};

}  // namespace tavo
