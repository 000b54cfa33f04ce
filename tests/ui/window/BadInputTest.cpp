// Shows the window with hostile names, damaged stores and unusual fonts. It must show everything,
// cut no text without an ellipsis and lose no data.
#include <QAbstractButton>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QtTest/QTest>
#include <iostream>

#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"
#include "tests/fakes/FakeIconSource.h"
#include "tests/ui/ActiveWindow.h"
#include "tests/ui/Geometry.h"
#include "tests/ui/MadeUpView.h"
#include "ui/editor/CategoryEditor.h"
#include "ui/editor/CategoryEditorList.h"
#include "ui/editor/CategoryEditorRow.h"
#include "ui/grid/TileGrid.h"
#include "ui/sidebar/SidebarList.h"
#include "ui/window/AlertSheet.h"
#include "ui/window/LauncherView.h"

namespace tavo {
namespace {

using Categories = std::vector<LauncherCategory>;

// Draws the widget, and saves the picture in the folder TAVO_PICTURES, if that is set.
void keepPicture(QWidget& widget, const QString& name) {
    const QString folder = qEnvironmentVariable("TAVO_PICTURES");
    const QPixmap picture = widget.grab();
    EXPECT_FALSE(picture.isNull());
    if (!folder.isEmpty() && QDir().mkpath(folder)) {
        picture.save(folder + u'/' + name + QStringLiteral(".png"));
    }
}

// Makes the interface font one and a half times as wide; the destructor restores it.
class WideFont {
public:
    WideFont() : before_(QApplication::font()) {
        QFont wide = before_;
        wide.setStretch(150);
        QApplication::setFont(wide);
    }
    ~WideFont() { QApplication::setFont(before_); }
    WideFont(const WideFont&) = delete;
    WideFont& operator=(const WideFont&) = delete;

private:
    QFont before_;
};

class BadInputTest : public testing::Test {
protected:
    LauncherView& view() {
        if (!view_) {
            view_ = makeMadeUpView(world, icons);
            view_->resize(size);
            view_->show();
            EXPECT_TRUE(QTest::qWaitForWindowExposed(view_.get()));
            activate(*view_);
        }
        return *view_;
    }
    void closeWindow() { view_.reset(); }

    template<typename Part>
    Part* find() {
        for (QWidget* const widget : view().findChildren<QWidget*>()) {
            if (auto* const part = dynamic_cast<Part*>(widget)) {
                return part;
            }
        }
        return nullptr;
    }
    void press(const QString& name) {
        for (auto* const button : view().findChildren<QAbstractButton*>()) {
            if (button->text() == name || button->accessibleName() == name) {
                button->click();
                QCoreApplication::processEvents();
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
                return;
            }
        }
        ADD_FAILURE() << "no button " << name.toStdString();
    }
    void openEditor() { press(QStringLiteral("Modifica categorie")); }

    // Installs desktop entries with these names, which may have any characters.
    void installNamed(const std::vector<std::string>& names) {
        int number = 0;
        for (const std::string& name : names) {
            world.applications.install({name, "/entries/" + std::to_string(number++) + ".desktop"});
        }
    }
    bool saysSomethingThatEndsWith(const QString& end) {
        const auto labels = view().findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](const QLabel* label) { return label->text().endsWith(end); });
    }
    void failToOpen(const std::string& message) {
        list<TileGrid>().pressItem(0);
        world.workspace.complete(world.workspace.openings.size() - 1, std::nullopt, Error{message});
        world.mainQueue.run();
        QCoreApplication::processEvents();
    }
    template<typename List>
    List& list() {
        return *find<List>();
    }

    void expectInOrder(const QString& picture) {
        QCoreApplication::processEvents();
        EXPECT_EQ(layoutProblems(view()).join(u'\n').toStdString(), "");
        expectApart(list<TileGrid>());
        expectApart(list<SidebarList>());
        keepPicture(view(), picture);
    }
    // Checks that items do not overlap and do not extend beyond the sides of their list.
    template<typename List>
    static void expectApart(List& items) {
        const int width = items.viewport()->width();
        const int count = std::min(items.itemCount(), 60);
        for (int i = 0; i < count; ++i) {
            const QRect rect = items.itemRect(i);
            EXPECT_GE(rect.left(), 0);
            EXPECT_LE(rect.right(), width);
            for (int other = i + 1; other < count; ++other) {
                EXPECT_FALSE(rect.intersects(items.itemRect(other))) << i << " and " << other;
            }
        }
    }

    ModelHarness world;
    FakeIconSource icons;
    QSize size{760, 520};

private:
    std::unique_ptr<LauncherView> view_;
};

// ---- Names

std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

struct Name {
    const char* what;
    std::string text;
};

std::ostream& operator<<(std::ostream& out, const Name& name) {
    return out << name.what;
}

class HostileName : public BadInputTest, public testing::WithParamInterface<Name> {
protected:
    QString picture(const QString& part) const {
        return QStringLiteral("name-%1-%2").arg(QLatin1String(GetParam().what), part);
    }
};

TEST_P(HostileName, is_shown_everywhere_and_kept_as_it_is) {
    const std::string& name = GetParam().text;
    installNamed({name, "Altra", "Zeta " + name});
    world.store({{"a", name}, {"b", "Sotto", "a"}, {"c", "Terza " + name, "b"}});
    world.storeRules({{"a", name}, {"b", "parola, " + name}});
    view();
    EXPECT_EQ(list<TileGrid>().itemCount(), 3);
    EXPECT_EQ(list<SidebarList>().itemCount(), 7);
    expectInOrder(picture(QStringLiteral("window")));

    failToOpen("Non si apre: " + name);
    ASSERT_NE(find<AlertSheet>(), nullptr);
    expectInOrder(picture(QStringLiteral("alert")));
    press(QStringLiteral("OK"));

    openEditor();
    ASSERT_NE(find<CategoryEditor>(), nullptr);
    expectInOrder(picture(QStringLiteral("editor")));
    press(QStringLiteral("Salva"));
    ASSERT_EQ(find<CategoryEditor>(), nullptr);
    const auto stored = decodeCategories(*world.defaults.data(kCategoriesKey));
    ASSERT_TRUE(stored);
    ASSERT_EQ(stored->size(), 3U);
    EXPECT_EQ(stored->at(0).name, std::string(trimmed(name)));
    EXPECT_EQ(stored->at(1).name, "Sotto");
    const auto rules = world.defaults.stringDictionary(kRulesKey);
    ASSERT_TRUE(rules);
    EXPECT_EQ(rules->at("a"), name);
    EXPECT_EQ(rules->at("b"), "parola, " + name);
}

TEST_P(HostileName, fits_into_the_menus) {
    constexpr int kWidestMenu = 440;
    const std::string& name = GetParam().text;
    installNamed({name});
    world.store({{"a", name}, {"b", "Altra"}});
    view();
    press(QStringLiteral("Suggerimenti di ricerca"));
    QMenu* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 5);
    EXPECT_LE(menu->width(), kWidestMenu);
    keepPicture(*menu, picture(QStringLiteral("suggestions")));
    menu->actions()[3]->trigger();
    QCoreApplication::processEvents();
    // The chosen entry of the menu puts the category's name after "cat:" into the search field.
    EXPECT_EQ(view().findChild<QLineEdit*>()->text().left(4), QStringLiteral("cat:"));

    world.mainQueue.run();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QCoreApplication::processEvents();
    const QPoint middle = list<TileGrid>().itemRect(0).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, middle,
                            list<TileGrid>().viewport()->mapToGlobal(middle));
    QCoreApplication::sendEvent(list<TileGrid>().viewport(), &event);
    menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    QMenu* const categories = menu->actions().last()->menu();
    ASSERT_NE(categories, nullptr);
    categories->popup({});
    EXPECT_LE(categories->width(), kWidestMenu);
    keepPicture(*categories, picture(QStringLiteral("tile")));
    categories->actions()[0]->trigger();
    QCoreApplication::processEvents();
    EXPECT_NE(world.defaults.data(kAssignmentsKey), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Names, HostileName,
    testing::Values(Name{"ten_thousand_letters", std::string(10'000, 'W')},
                    Name{"ten_thousand_words", repeated("parola ", 1'428) + "fine"},
                    Name{"markup", "<b>Grassetto</b> &amp; <img src=x> <a href='y'>z</a>"},
                    Name{"ampersands", "Fotografia & Video && Musica &F"},
                    Name{"emoji", repeated("👩‍👩‍👧‍👦🏳️‍🌈👍🏽", 40)},
                    Name{"right_to_left", repeated("שלום עולם مرحبا بالعالم ", 20) + "x"},
                    Name{"direction_marks", "abc\u202E\u2066fdp.exe\u200F\u202D end"},
                    Name{"combining_marks", "e" + repeated("\u0301", 9'999) + " fine"},
                    Name{"newlines", "prima\nseconda\r\nterza\u2028quarta\u2029quinta"},
                    Name{"tabs", "prima\tseconda\t\tterza"},
                    Name{"nul", std::string("prima\0seconda\0", 14) + "terza"},
                    Name{"control_characters", "a\x01\x02\x1b[31m\x7f\u0085z"},
                    Name{"astral_and_private", "\U0001F5B3\U0010FFFD\uE000\uFFFD\uFEFFx"}),
    [](const auto& row) { return std::string(row.param.what); });

// ---- Rule texts

TEST_F(BadInputTest, a_rule_text_of_a_hundred_thousand_characters_is_edited_and_kept) {
    const std::string rule = repeated("parola, ", 12'500);
    world.store({{"a", "Lunga"}, {"b", "Corta"}});
    world.storeRules({{"a", rule}});
    world.install({"Parola"});
    view();
    openEditor();
    expectInOrder(QStringLiteral("rule-100000"));
    auto* const field =
        dynamic_cast<QLineEdit*>(find<CategoryEditorList>()->rowAt(0).controls().at(2));
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text().size(), 100'000);
    field->setFocus();
    field->end(false);
    QTest::keyClicks(field, QStringLiteral("fine"));
    press(QStringLiteral("Salva"));
    EXPECT_EQ(world.defaults.stringDictionary(kRulesKey)->at("a"), rule + "fine");
}

// ---- Trees

Categories damagedTree() {
    return {{"self", "Sé stessa", "self"},
            {"x", "Cerchio 1", "y"},
            {"y", "Cerchio 2", "x"},
            {"orphan", "Orfana", "nobody"},
            {"top", "Cima"},
            {"1", "Uno", "top"},
            {"2", "Due", "1"},
            {"3", "Tre", "2"},
            {"4", "Quattro", "3"},
            {"5", "Cinque", "4"},
            {"6", "Sei", "5"},
            {"twin1", "Doppia"},
            {"twin2", "Doppia"},
            {"blank", "  "},
            {"empty", ""}};
}

TEST_F(BadInputTest, a_damaged_tree_is_shown_whole_with_what_cannot_be_reached_at_the_end) {
    world.store(damagedTree());
    view();
    const auto& rows = list<SidebarList>();
    ASSERT_EQ(rows.itemCount(), 4 + 15);
    EXPECT_EQ(rows.itemName(4), QStringLiteral("Cima"));
    EXPECT_EQ(rows.itemName(15), QStringLiteral("Sé stessa"));
    EXPECT_EQ(rows.itemName(16), QStringLiteral("Cerchio 1"));
    EXPECT_EQ(rows.itemName(18), QStringLiteral("Orfana"));
    expectInOrder(QStringLiteral("tree-window"));
    openEditor();
    ASSERT_EQ(find<CategoryEditorList>()->rowCount(), 15);
    expectInOrder(QStringLiteral("tree-editor"));
    press(QStringLiteral("Salva"));
    // Saving has removed the second category with the same id and those without a name, and has
    // broken the circle of parents.
    const auto stored = decodeCategories(*world.defaults.data(kCategoriesKey));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->size(), 12U);
    for (const LauncherCategory& category : *stored) {
        EXPECT_NE(category.parentID, category.id);
    }
    expectInOrder(QStringLiteral("tree-repaired"));
}

TEST_F(BadInputTest, opening_the_editor_over_two_categories_of_one_id_ends_the_program) {
    world.store({{"same", "Prima"}, {"other", "Altra"}, {"same", "Seconda"}});
    view();
    ASSERT_EQ(list<SidebarList>().itemCount(), 4 + 2);
    EXPECT_EQ(list<SidebarList>().itemName(4), QStringLiteral("Prima"));
    testing::FLAGS_gtest_death_test_style = "fast";
    EXPECT_EXIT(openEditor(), testing::ExitedWithCode(1), "^Duplicate values for key: 'same'\n$");
}

// ---- Thousands

TEST_F(BadInputTest, five_thousand_categories_can_be_selected_suggested_assigned_and_edited) {
    constexpr int kMany = 5'000;
    Categories categories;
    StringDictionary rules;
    for (int i = 0; i < kMany; ++i) {
        const std::string id = "id" + std::to_string(i);
        categories.emplace_back(
            id, "Categoria " + std::to_string(i),
            i % 3 == 0 ? std::nullopt : std::optional("id" + std::to_string(i - 1)));
        rules[id] = "parola" + std::to_string(i);
    }
    world.store(categories);
    world.storeRules(rules);
    world.install({"Parola4999", "Note", "Posta"});
    QElapsedTimer timer;
    const auto took = [&timer](const char* what) {
        QCoreApplication::processEvents();
        std::cout << what << ": " << timer.restart() << " ms\n";
    };
    timer.start();
    view();
    took("window");
    expectInOrder(QStringLiteral("many-window"));

    auto& rows = list<SidebarList>();
    ASSERT_EQ(rows.itemCount(), 4 + kMany);
    timer.restart();
    rows.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&rows, Qt::Key_End);
    QTest::keyClick(&rows, Qt::Key_Return);
    took("select the last");
    EXPECT_EQ(list<TileGrid>().itemCount(), 1);
    EXPECT_EQ(rows.verticalScrollBar()->value(), rows.verticalScrollBar()->maximum());
    expectInOrder(QStringLiteral("many-last"));

    timer.restart();
    press(QStringLiteral("Suggerimenti di ricerca"));
    took("open the suggestions");
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 3 + kMany);
    EXPECT_LE(menu->height(), menu->screen()->availableSize().height());
    QTest::keyClick(menu, Qt::Key_End);
    QTest::keyClick(menu, Qt::Key_Return);
    took("choose the last");
    EXPECT_EQ(view().findChild<QLineEdit*>()->text(), QStringLiteral("cat:Categoria 4999"));
    EXPECT_EQ(list<TileGrid>().itemCount(), 1);

    const QPoint middle = list<TileGrid>().itemRect(0).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, middle,
                            list<TileGrid>().viewport()->mapToGlobal(middle));
    timer.restart();
    QCoreApplication::sendEvent(list<TileGrid>().viewport(), &event);
    menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    QMenu* const submenu = menu->actions().last()->menu();
    menu->setActiveAction(menu->actions().last());
    submenu->popup({});
    took("open a tile's categories");
    ASSERT_EQ(submenu->actions().size(), kMany);
    EXPECT_LE(submenu->height(), menu->screen()->availableSize().height());
    submenu->actions().last()->trigger();
    took("assign to the last");
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);

    timer.restart();
    openEditor();
    took("open the editor");
    CategoryEditorList& edited = *find<CategoryEditorList>();
    ASSERT_EQ(edited.rowCount(), kMany);
    expectInOrder(QStringLiteral("many-editor"));
    timer.restart();
    edited.scrollToEnd();
    took("scroll to the end");
    expectInOrder(QStringLiteral("many-editor-end"));
    timer.restart();
    press(QStringLiteral("Salva"));
    took("save");
    EXPECT_EQ(decodeCategories(*world.defaults.data(kCategoriesKey))->size(), 5'000U);
}

// ---- Sizes and fonts

struct Frame {
    const char* what;
    QSize size;
    bool wide;  // with a wider interface font
};

std::ostream& operator<<(std::ostream& out, const Frame& frame) {
    return out << frame.what;
}

class EveryFrame : public BadInputTest, public testing::WithParamInterface<Frame> {
protected:
    void SetUp() override {
        size = GetParam().size;
        if (GetParam().wide) {
            font_ = std::make_unique<WideFont>();
        }
        std::vector<std::string> names;
        for (int i = 0; i < 120; ++i) {
            names.push_back(repeated("Applicazione dal nome lungo ", i % 4) + std::to_string(i));
        }
        installNamed(names);
        Categories categories = {{"a", "Lavoro"},
                                 {"b", "Una categoria dal nome piuttosto lungo", "a"},
                                 {"c", "Cliente Nord", "b"},
                                 {"d", "Profonda e lunga", "c"},
                                 {"e", "Ancora più profonda e lunga", "d"}};
        for (int i = 0; i < 20; ++i) {
            categories.emplace_back("n" + std::to_string(i), "Gruppo " + std::to_string(i));
        }
        world.store(categories);
    }
    QString picture(const QString& part) const {
        return QStringLiteral("frame-%1-%2").arg(QLatin1String(GetParam().what), part);
    }

private:
    std::unique_ptr<WideFont> font_;
};

TEST_P(EveryFrame, holds_every_view_with_nothing_overlapping_and_nothing_cut) {
    view();
    expectInOrder(picture(QStringLiteral("window")));
    list<SidebarList>().pressItem(1);
    expectInOrder(picture(QStringLiteral("empty")));
    list<SidebarList>().pressItem(0);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("nome lungo 1"));
    expectInOrder(picture(QStringLiteral("search")));
    failToOpen("L’applicazione non è stata trovata in /usr/share/applications/" +
               repeated("cartella/", 20) + "x.desktop");
    expectInOrder(picture(QStringLiteral("alert")));
    press(QStringLiteral("OK"));
    failToOpen(repeated("Una riga del messaggio.\n", 300));
    expectInOrder(picture(QStringLiteral("long-alert")));
    EXPECT_EQ(find<AlertSheet>()->accessibleDescription().count(u'\n'), 1999 / 24);
    if (size.height() < 1'000) {
        EXPECT_TRUE(saysSomethingThatEndsWith(QStringLiteral("messaggio.…")));
    }
    press(QStringLiteral("OK"));
    openEditor();
    expectInOrder(picture(QStringLiteral("editor")));
    find<CategoryEditorList>()->rowAt(4, true);
    expectInOrder(picture(QStringLiteral("editor-deep")));
}

TEST_P(EveryFrame, can_change_its_size_with_a_sheet_in_it) {
    view();
    openEditor();
    for (const QSize& next : {QSize(760, 520), QSize(1400, 1000), GetParam().size}) {
        view().resize(next);
        expectInOrder(picture(QStringLiteral("resized")));
    }
    press(QStringLiteral("Annulla"));
    failToOpen(repeated("Una riga del messaggio.\n", 300));
    for (const QSize& next : {QSize(1400, 1000), QSize(760, 520), GetParam().size}) {
        view().resize(next);
        expectInOrder(picture(QStringLiteral("resized-alert")));
    }
}

TEST_F(BadInputTest, the_wide_font_of_these_tests_is_half_as_wide_again) {
    const QString text = QStringLiteral("Modifica categorie");
    const int usual = QFontMetrics(QApplication::font()).horizontalAdvance(text);
    const WideFont wide;
    EXPECT_NEAR(QFontMetrics(QApplication::font()).horizontalAdvance(text), usual * 1.5,
                usual * 0.1);
}

INSTANTIATE_TEST_SUITE_P(Frames, EveryFrame,
                         testing::Values(Frame{"smallest", {760, 520}, false},
                                         Frame{"usual", {980, 640}, false},
                                         Frame{"largest", {3840, 2160}, false},
                                         Frame{"smallest_wide_font", {760, 520}, true},
                                         Frame{"usual_wide_font", {980, 640}, true},
                                         Frame{"largest_wide_font", {3840, 2160}, true}),
                         [](const auto& row) { return std::string(row.param.what); });

}  // namespace
}  // namespace tavo
