#include "tests/golden/Scenes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <ostream>

#include "tests/golden/Stage.h"
#include "ui/controls/SearchField.h"
#include "ui/editor/CategoryEditor.h"
#include "ui/editor/CategoryEditorList.h"
#include "ui/editor/CategoryEditorRow.h"
#include "ui/grid/AppTile.h"
#include "ui/grid/TileGrid.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Texts.h"
#include "ui/sidebar/SidebarList.h"
#include "ui/window/AlertSheet.h"
#include "ui/window/LauncherWindow.h"

namespace tavo {
namespace {

constexpr int kAround = 40;  // how much of the window a picture shows around its subject

const QString kLongName = QStringLiteral("Registratore vocale con trascrizione automatica");

void noApplications(Stage& stage) {
    stage.install({});
    stage.window();
}

void full(Stage& stage) {
    stage.window();
}

void smallest(Stage& stage) {
    stage.setWindowSize({metrics::kSmallestWidth, metrics::kSmallestHeight});
    stage.window();
}

void searchWithResults(Stage& stage) {
    stage.type(QStringLiteral("vi"));
}

void searchWithoutResults(Stage& stage) {
    stage.type(QStringLiteral("niente del genere"));
}

void favorites(Stage& stage) {
    stage.select(QStringLiteral("Preferite"));
}

void recents(Stage& stage) {
    stage.select(QStringLiteral("Recenti"));
}

void hidden(Stage& stage) {
    stage.world.storeHidden({"Giochi", "Mappe"});
    stage.select(QStringLiteral("Nascoste"));
}

void nestedCategory(Stage& stage) {
    stage.select(QStringLiteral("Progetti"));
}

// More categories, deeper and with longer names than there is room for.
void manyCategories(Stage& stage) {
    std::vector<LauncherCategory> categories = {{"a", "Amministrazione e contabilità"},
                                                {"b", "Fatture", "a"},
                                                {"c", "Fornitori", "b"},
                                                {"d", "Estero", "c"},
                                                {"e", "Oltremare", "d"},
                                                {"f", "Utility"}};
    for (int i = 1; i <= 9; ++i) {
        categories.emplace_back("n" + std::to_string(i), "Progetto " + std::to_string(i));
    }
    stage.world.store(categories);
    stage.select(QStringLiteral("Estero"));
    SidebarList& list = stage.categories();
    // Near the right edge, where the pointer keeps the scroll bar visible.
    stage.pointAt(*list.viewport(), QPoint(list.viewport()->width() - 8, 200));
    stage.crop({0, 0, metrics::kSidebarWidth, metrics::kFirstHeight});
}

void keyboardInSidebar(Stage& stage) {
    stage.window();
    stage.categories().setFocus(Qt::TabFocusReason);
    stage.press(Qt::Key_Down);
    stage.crop({0, 0, metrics::kSidebarWidth, metrics::kFirstHeight});
}

void scrolledToTheEnd(Stage& stage) {
    TileGrid& grid = stage.grid();
    grid.verticalScrollBar()->setValue(grid.verticalScrollBar()->maximum());
    stage.pointAt(*grid.viewport(), QPoint(grid.viewport()->width() - 8, 20));
}

// Points at one tile, and moves the keyboard focus to another one.
void pointAndFocus(Stage& stage, int pointed, int steps) {
    TileGrid& grid = stage.grid();
    stage.pointAt(*grid.viewport(), AppTile::iconRect(grid.itemRect(pointed)).center());
    stage.press(Qt::Key_Down);
    for (int step = 0; step < steps; ++step) {
        stage.press(Qt::Key_Right);
    }
    const QRect all = grid.itemRect(0) | grid.itemRect(grid.itemCount() - 1);
    stage.crop(
        all.adjusted(-20, -20, 20, 20).translated(stage.placeOf(*grid.viewport()).topLeft()));
}

// Tiles that are plain, favourite, under the pointer, with the keyboard focus, and with a long
// name.
void tileStates(Stage& stage) {
    stage.install({"Agenda", "Calcolatrice", "Disegno", "Foto", kLongName.toStdString(), "Video"});
    pointAndFocus(stage, stage.tileOf(QStringLiteral("Disegno")), 3);
}

// Tiles in two states: a favourite under the pointer; a long name with the keyboard focus.
void tileStatesCombined(Stage& stage) {
    stage.install({"Calcolatrice", "Codice", kLongName.toStdString()});
    stage.world.storeFavorites({"Calcolatrice", kLongName.toStdString()});
    pointAndFocus(stage, stage.tileOf(QStringLiteral("Calcolatrice")), 2);
}

// Names that begin alike, cut in the middle; another long one, cut at its end.
void namesThatBeginAlike(Stage& stage) {
    stage.install({"Agenda", "Documenti di amministrazione del 2025",
                   "Documenti di amministrazione del 2026", kLongName.toStdString()});
    pointAndFocus(stage, 0, 1);
}

// The keyboard focus on a tile, another tile under the pointer.
void moreContrast(Stage& stage) {
    setMoreContrast(true);
    TileGrid& grid = stage.grid();
    stage.pointAt(*grid.viewport(), AppTile::iconRect(grid.itemRect(8)).center());
    stage.press(Qt::Key_Down);
}

// Crops the picture to the popups and a little of the window around them.
void cropToPopups(Stage& stage) {
    QRect covered;
    for (const QWidget* const popup : stage.popups()) {
        covered |= stage.placeOf(*popup);
    }
    stage.crop(covered.adjusted(-kAround, -kAround, kAround, kAround));
}

void suggestionMenu(Stage& stage) {
    stage.pressButton(texts::kSearchSuggestions.toString());
    stage.press(Qt::Key_Down);
    cropToPopups(stage);
}

void suggestionMenuWithoutCategories(Stage& stage) {
    stage.world.store({});
    stage.pressButton(texts::kSearchSuggestions.toString());
    cropToPopups(stage);
}

// The menu of an application that is in no category, with the focus on the first entry.
void tileMenu(Stage& stage) {
    stage.openTileMenu(QStringLiteral("Archivio"));
    stage.press(Qt::Key_Down);
    cropToPopups(stage);
}

// The menu of an application that is hidden, favourite and assigned, with the submenu open.
void tileMenuWithCategories(Stage& stage) {
    stage.world.storeHidden({"Calcolatrice"});
    stage.select(QStringLiteral("Nascoste"));
    stage.openTileMenu(QStringLiteral("Calcolatrice"));
    for (int entry = 0; entry < 3; ++entry) {
        stage.press(Qt::Key_Down);
    }
    stage.press(Qt::Key_Right);
    cropToPopups(stage);
}

void editor(Stage& stage) {
    stage.pressButton(texts::kEditCategories.toString());
}

template<typename SheetKind>
void cropToSheet(Stage& stage) {
    const QWidget& card =
        *partsOf<SheetKind>(stage.window())
             .front()
             ->template findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    stage.crop(stage.placeOf(card).adjusted(-kAround, -kAround, kAround, kAround));
}

void editorWithMoreContrast(Stage& stage) {
    setMoreContrast(true);
    editor(stage);
}

void editorWithoutCategories(Stage& stage) {
    stage.world.store({});
    editor(stage);
    cropToSheet<CategoryEditor>(stage);
}

void editorWithPickerOpen(Stage& stage) {
    editor(stage);
    QWidget* const picker =
        partsOf<CategoryEditorList>(stage.window()).front()->rowAt(2, true).controls().at(1);
    stage.click(*picker, picker->rect().center());
    cropToSheet<CategoryEditor>(stage);
}

// The editor after a category was added, while the name of the next one is typed.
void editorAdding(Stage& stage) {
    editor(stage);
    stage.type(QStringLiteral("Fotografie"));
    stage.press(Qt::Key_Return);
    stage.type(QStringLiteral("Studio"));
    cropToSheet<CategoryEditor>(stage);
}

// The editor with the keyboard focus in a name, all of which is selected.
void editorRenaming(Stage& stage) {
    editor(stage);
    auto* const name = dynamic_cast<QLineEdit*>(
        partsOf<CategoryEditorList>(stage.window()).front()->rowAt(1).controls().at(0));
    name->setFocus(Qt::TabFocusReason);
    name->selectAll();
    cropToSheet<CategoryEditor>(stage);
}

void alert(Stage& stage) {
    stage.press(Qt::Key_Return);
    stage.failOpening("Agenda non si è avviata: il programma “agenda” non c’è.");
}

void alertWithLongMessage(Stage& stage) {
    stage.press(Qt::Key_Return);
    std::string message = "Il file /opt/applicazioni/agenda/1.4/bin/agenda-principale";
    for (int i = 0; i < 12; ++i) {
        message += " non è un programma che questo computer sappia eseguire;";
    }
    stage.failOpening(message);
    cropToSheet<AlertSheet>(stage);
}

void toolbarStates(Stage& stage) {
    for (auto* const button : partsOf<QAbstractButton>(stage.window())) {
        if (button->toolTip() == texts::kSearchSuggestions) {
            button->setFocus(Qt::TabFocusReason);
        } else if (button->toolTip() == texts::kReload) {
            stage.pointAt(*button, button->rect().center());
        }
    }
    stage.crop({metrics::kSidebarWidth, 0, metrics::kFirstWidth - metrics::kSidebarWidth, 108});
}

}  // namespace

void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

const std::vector<Scene>& scenes() {
    static const std::vector<Scene> all = {
        {.name = "no_applications", .arrange = noApplications},
        {.name = "full", .arrange = full, .everyScale = true},
        {.name = "smallest_window", .arrange = smallest},
        {.name = "search_with_results", .arrange = searchWithResults},
        {.name = "search_without_results", .arrange = searchWithoutResults},
        {.name = "favorites", .arrange = favorites},
        {.name = "recents", .arrange = recents},
        {.name = "hidden", .arrange = hidden},
        {.name = "nested_category", .arrange = nestedCategory},
        {.name = "many_categories", .arrange = manyCategories},
        {.name = "keyboard_in_sidebar", .arrange = keyboardInSidebar},
        {.name = "scrolled_to_the_end", .arrange = scrolledToTheEnd},
        {.name = "toolbar_states", .arrange = toolbarStates, .everyScale = true},
        {.name = "tile_states", .arrange = tileStates, .everyScale = true},
        {.name = "tile_states_combined", .arrange = tileStatesCombined},
        {.name = "names_that_begin_alike", .arrange = namesThatBeginAlike},
        {.name = "more_contrast", .arrange = moreContrast},
        {.name = "suggestion_menu", .arrange = suggestionMenu, .everyScale = true},
        {.name = "suggestion_menu_without_categories", .arrange = suggestionMenuWithoutCategories},
        {.name = "tile_menu", .arrange = tileMenu},
        {.name = "tile_menu_with_categories",
         .arrange = tileMenuWithCategories,
         .everyScale = true},
        {.name = "editor", .arrange = editor},
        {.name = "editor_with_more_contrast", .arrange = editorWithMoreContrast},
        {.name = "editor_without_categories", .arrange = editorWithoutCategories},
        {.name = "editor_with_picker_open", .arrange = editorWithPickerOpen},
        {.name = "editor_adding", .arrange = editorAdding},
        {.name = "editor_renaming", .arrange = editorRenaming, .everyScale = true},
        {.name = "alert", .arrange = alert},
        {.name = "alert_with_long_message", .arrange = alertWithLongMessage, .everyScale = true},
    };
    return all;
}

}  // namespace tavo
