#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolTip>
#include <QtTest/QTest>
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

#include "ui/controls/LauncherStyle.h"
#include "ui/controls/PopupMenu.h"
#include "ui/look/Appearance.h"

namespace tavo {
namespace {

constexpr QColor kDarkBackground(40, 40, 44);
constexpr QColor kLightBackground(243, 243, 246);

QPalette paletteOn(const QColor& background) {
    QPalette palette(background);
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::Highlight, QColor(0, 122, 255));
    return palette;
}

QFont fontOf(int size, int stretch = 100) {
    QFont font = interfaceFont(size);
    font.setStretch(stretch);
    return font;
}

QImage rendered(QWidget& widget, const QColor& background = Qt::magenta) {
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    widget.ensurePolished();
    widget.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

struct Size {
    const char* name;
    int size;
};

TEST(LauncherStyle, fields_combo_boxes_and_buttons_are_equally_high_at_every_size_of_text) {
    for (const Size& row : {Size{"body", 13}, Size{"caption", 10}, Size{"large", 26}}) {
        SCOPED_TRACE(row.name);
        const QFont font = fontOf(row.size);
        const int height = QFontMetrics(font).height() + 10;
        QLineEdit line;
        QComboBox box;
        box.addItem(QStringLiteral("Categoria principale"));
        QPushButton button(QStringLiteral("Salva"));
        for (QWidget* const control : {static_cast<QWidget*>(&line), static_cast<QWidget*>(&box),
                                       static_cast<QWidget*>(&button)}) {
            control->setFont(font);
            EXPECT_EQ(control->sizeHint().height(), height);
        }
    }
}

TEST(LauncherStyle, after_a_choice_the_combo_box_that_the_pointer_has_left_is_as_before) {
    QWidget window;
    window.resize(400, 300);
    QComboBox box(&window);
    box.addItems({QStringLiteral("Lavoro"), QStringLiteral("Utility"), QStringLiteral("Altro")});
    box.setGeometry(20, 20, 200, box.sizeHint().height());
    QCursor::setPos(700, 500);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const QImage before = box.grab().toImage();
    const QPoint middle = box.mapTo(&window, box.rect().center());
    QTest::mouseMove(window.windowHandle(), middle);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, middle);
    QWidget* const popup = QApplication::activePopupWidget();
    ASSERT_NE(popup, nullptr);
    box.setAttribute(Qt::WA_UnderMouse);  // as it stays on X11
    QTest::keyClick(popup->windowHandle(), Qt::Key_Down);
    QTest::keyClick(popup->windowHandle(), Qt::Key_Up);
    // The pointer chooses an entry that is below the combo box.
    QCursor::setPos(window.mapToGlobal(QPoint(30, 250)));
    QTest::keyClick(popup->windowHandle(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !box.underMouse(); }, 10'000));
    box.clearFocus();
    EXPECT_EQ(box.grab().toImage(), before);
}

TEST(LauncherStyle, text_fits_into_its_control_with_a_font_half_as_wide_again) {
    const QString text = QStringLiteral("Sottocategoria di Progetti");
    for (const int stretch : {100, 150}) {
        SCOPED_TRACE(stretch);
        const QFont font = fontOf(13, stretch);
        const int width = QFontMetrics(font).horizontalAdvance(text);
        QPushButton button(text);
        button.setFont(font);
        EXPECT_GE(button.sizeHint().width(), width + 20);
        QComboBox box;
        box.setFont(font);
        box.addItem(text);
        box.resize(box.sizeHint());
        QStyleOptionComboBox option;
        option.initFrom(&box);
        EXPECT_GE(
            box.style()
                ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box)
                .width(),
            width);
    }
}

TEST(LauncherStyle, a_field_without_a_frame_is_drawn_as_qt_draws_it) {
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    QLineEdit ours;
    QLineEdit theirs;
    theirs.setStyle(fusion.get());
    for (QLineEdit* const line : {&ours, &theirs}) {
        line->setFrame(false);
        line->setFont(fontOf(13));
        line->setText(QStringLiteral("Cerca"));
        line->resize(200, 24);
    }
    EXPECT_EQ(ours.sizeHint(), theirs.sizeHint());
    theirs.setPalette(ours.palette());
    EXPECT_EQ(rendered(ours), rendered(theirs));
    theirs.setStyle(nullptr);
}

TEST(LauncherStyle, the_default_button_is_filled_with_the_accent_and_the_others_are_not) {
    for (const QColor& background : {kLightBackground, kDarkBackground}) {
        SCOPED_TRACE(background.name().toStdString());
        const Appearance look(paletteOn(background));
        QPushButton button(QStringLiteral("Salva"));
        button.setPalette(paletteOn(background));
        button.resize(button.sizeHint());
        const QPoint besideText(6, button.height() / 2);
        EXPECT_EQ(rendered(button).pixelColor(besideText), look.button);
        button.setDefault(true);
        EXPECT_EQ(rendered(button).pixelColor(besideText), look.accentBackground);
        button.setEnabled(false);
        EXPECT_NE(rendered(button).pixelColor(besideText), look.accentBackground);
    }
}

TEST(LauncherStyle, a_button_shows_each_of_its_states) {
    QPushButton button(QStringLiteral("Annulla"));
    button.resize(button.sizeHint());
    const auto look = [&](QStyle::State state, bool accented) {
        QStyleOptionButton option;
        option.initFrom(&button);
        option.text = button.text();
        option.state = state;
        option.features.setFlag(QStyleOptionButton::DefaultButton, accented);
        QImage image(button.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        button.style()->drawControl(QStyle::CE_PushButton, &option, &painter, &button);
        return image;
    };
    const QStyle::State on = QStyle::State_Enabled | QStyle::State_Active;
    const QStyle::State focused = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
    const QStyle::State states[] = {on, on | QStyle::State_MouseOver, on | QStyle::State_Sunken,
                                    on | focused, QStyle::State_None};
    for (std::size_t one = 0; one < std::size(states); ++one) {
        // Compares with an enabled button, because a disabled one looks the same as default button
        // or not.
        EXPECT_NE(look(states[one], true), look(on, false)) << one;
        for (std::size_t other = 0; other < one; ++other) {
            EXPECT_NE(look(states[one], false), look(states[other], false)) << one << other;
            EXPECT_NE(look(states[one], true), look(states[other], true)) << one << other;
        }
    }
    EXPECT_EQ(look(on, false), look(on | QStyle::State_HasFocus, false))
        << "the ring is for those who use the keyboard";
}

TEST(LauncherStyle, a_long_choice_leaves_the_combo_boxs_triangle_free) {
    QComboBox box;
    box.setFont(fontOf(13));
    box.setPalette(paletteOn(kLightBackground));
    box.addItem(QString(1000, u'M'));
    box.resize(150, box.sizeHint().height());
    const QImage image = rendered(box);
    const QColor background = Appearance(box.palette()).field;
    for (int y = 4; y < box.height() - 4; ++y) {
        for (int x = box.width() - 22; x < box.width() - 17; ++x) {
            ASSERT_EQ(image.pixelColor(x, y), background) << x << "," << y;
        }
    }
}

// Whether two colours are equal except for rounding in the antialiasing.
bool isAbout(const QColor& color, const QColor& expected) {
    return std::abs(color.red() - expected.red()) + std::abs(color.green() - expected.green()) +
               std::abs(color.blue() - expected.blue()) <=
           3;
}

TEST(LauncherStyle, the_lines_of_a_frame_lie_on_whole_pixels_at_every_scale) {
    struct Scale {
        double scale;
        int pixels;
    };
    for (const Scale& row :
         {Scale{1, 1}, Scale{1.25, 1}, Scale{1.5, 1}, Scale{2, 2}, Scale{3, 3}}) {
        SCOPED_TRACE(row.scale);
        QLineEdit line;
        line.setPalette(paletteOn(kLightBackground));
        line.resize(100, 26);
        QImage image((QSizeF(120, 40) * row.scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(row.scale);
        image.fill(Qt::magenta);
        line.ensurePolished();
        // At fractional scales, (3, 5) is between two device pixels.
        line.render(&image, QPoint(3, 5), {}, QWidget::DrawChildren);
        const Appearance look(line.palette());
        int lines = 0;
        const int y = static_cast<int>(18 * row.scale);
        for (int x = 0; x < static_cast<int>(8 * row.scale); ++x) {
            const QColor color = image.pixelColor(x, y);
            ASSERT_TRUE(isAbout(color, Qt::magenta) || isAbout(color, look.fieldBorder) ||
                        isAbout(color, look.field))
                << x << " " << color.name().toStdString();
            lines += isAbout(color, look.fieldBorder) ? 1 : 0;
        }
        EXPECT_EQ(lines, row.pixels);
    }
}

TEST(LauncherStyle, text_in_a_field_follows_the_look_unless_its_owner_chose_a_colour) {
    QWidget window;
    QLineEdit plain(&window);
    QLineEdit quiet(&window);
    QPalette chosen;
    chosen.setColor(QPalette::Text, Qt::red);
    quiet.setPalette(chosen);
    for (const QColor& background : {kDarkBackground, kLightBackground, kDarkBackground}) {
        window.setPalette(paletteOn(background));
        plain.ensurePolished();
        quiet.ensurePolished();
        const Appearance look(window.palette());
        EXPECT_EQ(plain.palette().color(QPalette::Text), look.text);
        EXPECT_EQ(plain.palette().color(QPalette::PlaceholderText), look.promptText);
        EXPECT_EQ(quiet.palette().color(QPalette::Text), QColor(Qt::red));
        for (const QLineEdit* const line : {&plain, &quiet}) {
            EXPECT_EQ(line->palette().color(QPalette::Highlight), look.accentBackground);
            EXPECT_EQ(line->palette().color(QPalette::HighlightedText), look.textOnAccent);
        }
    }
}

TEST(LauncherStyle, nothing_moves_by_itself) {
    const QStyle& style = *QApplication::style();
    EXPECT_EQ(style.styleHint(QStyle::SH_Widget_Animation_Duration), 0);
    EXPECT_EQ(style.styleHint(QStyle::SH_Menu_FadeOutOnHide), 0);
    EXPECT_EQ(style.styleHint(QStyle::SH_Menu_FlashTriggeredItem), 0);
    for (const Qt::UIEffect effect : {Qt::UI_AnimateMenu, Qt::UI_FadeMenu, Qt::UI_AnimateCombo,
                                      Qt::UI_AnimateTooltip, Qt::UI_FadeTooltip}) {
        EXPECT_FALSE(QApplication::isEffectEnabled(effect)) << effect;
    }
}

TEST(LauncherStyle, the_menu_of_a_text_field_has_no_symbols_of_another_hand) {
    QMenu menu;
    QPixmap foreign(16, 16);
    foreign.fill(Qt::red);
    QAction* const entry = menu.addAction(QIcon(foreign), QStringLiteral("Copia"));
    menu.ensurePolished();
    EXPECT_TRUE(entry->icon().isNull());
    EXPECT_EQ(menu.font().pixelSize(), 13);
}

// Popup windows whose parent is the window: menus and the lists of combo boxes.
class Popups : public testing::TestWithParam<bool> {
protected:
    Popups() {
        if (GetParam()) {
            window.setAttribute(Qt::WA_TranslucentBackground);
        }
        window.resize(300, 200);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    static QWidget* opened(const char* className) {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget->inherits(className) && widget->isVisible()) {
                return widget;
            }
        }
        return nullptr;
    }

    void expectRoundCorners(const QWidget& popup) const {
        EXPECT_EQ(popup.testAttribute(Qt::WA_TranslucentBackground), GetParam());
        if (GetParam()) {
            EXPECT_TRUE(popup.mask().isEmpty());
            return;
        }
        const QRegion shown = popup.mask();
        EXPECT_EQ(shown.boundingRect(), popup.rect());
        const QRect rect = popup.rect();
        for (const QPoint& corner :
             {rect.topLeft(), rect.topRight(), rect.bottomLeft(), rect.bottomRight()}) {
            EXPECT_FALSE(shown.contains(corner));
        }
        EXPECT_TRUE(shown.contains(rect.center()));
    }

    QWidget window;
};

INSTANTIATE_TEST_SUITE_P(LauncherStyle, Popups, testing::Bool(),
                         [](const auto& row) { return row.param ? "blended" : "cut"; });

TEST_P(Popups, have_round_corners) {
    auto* const menu = new PopupMenu(QStringLiteral("Menu"), &window);
    PopupMenu* const submenu = menu->addSubmenu(QStringLiteral("Categorie"));
    submenu->addEntry(QStringLiteral("Lavoro"), {}, [] {});
    menu->openAt(QPoint(100, 100), PopupMenu::By::Pointer);
    menu->setActiveAction(menu->actions().front());
    QTest::keyClick(menu, Qt::Key_Right);
    ASSERT_TRUE(submenu->isVisible());
    expectRoundCorners(*menu);
    expectRoundCorners(*submenu);
    menu->close();

    QComboBox box(&window);
    box.addItems({QStringLiteral("Categoria principale"), QStringLiteral("Lavoro")});
    box.show();
    box.showPopup();
    const QWidget* const list = opened("QComboBoxPrivateContainer");
    ASSERT_NE(list, nullptr);
    expectRoundCorners(*list);
    box.hidePopup();

    QToolTip::showText(QPoint(100, 100), QStringLiteral("Aggiorna app"), &window);
    const QWidget* const tip = opened("QTipLabel");
    ASSERT_NE(tip, nullptr);
    expectRoundCorners(*tip);
    QToolTip::hideText();
}

TEST_P(Popups, a_list_of_many_choices_opens_beside_its_combo_box_on_the_screen_and_scrolls) {
    QComboBox box(&window);
    for (int i = 0; i < 500; ++i) {
        box.addItem(QStringLiteral("Sottocategoria di %1").arg(i));
    }
    box.setFixedWidth(208);
    box.show();
    const QRect screen = window.screen()->geometry();
    for (const int top : {0, screen.bottom() - 60}) {
        SCOPED_TRACE(top);
        window.move(20, top);
        box.showPopup();
        const QWidget* const list = opened("QComboBoxPrivateContainer");
        ASSERT_NE(list, nullptr);
        const QRect field(box.mapToGlobal(QPoint()), box.size());
        EXPECT_TRUE(screen.contains(list->geometry()));
        EXPECT_FALSE(list->geometry().intersects(field));
        const QScrollBar& bar = *box.view()->verticalScrollBar();
        EXPECT_TRUE(bar.isVisible());
        EXPECT_EQ(bar.width(), 10);
        QTest::keyClick(box.view(), Qt::Key_End);
        EXPECT_EQ(bar.value(), bar.maximum());
        box.hidePopup();
    }
}

QRect scrollBarPart(QScrollBar& bar, QStyle::SubControl part) {
    QStyleOptionSlider option;
    option.initFrom(&bar);
    option.orientation = bar.orientation();
    option.minimum = bar.minimum();
    option.maximum = bar.maximum();
    option.sliderPosition = bar.value();
    option.pageStep = bar.pageStep();
    return bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, part, &bar);
}

TEST(LauncherStyle, the_thumb_goes_from_one_end_of_its_bar_to_the_other) {
    QScrollBar bar(Qt::Vertical);
    bar.resize(10, 300);
    bar.setRange(0, 200'000'000);
    bar.setPageStep(300);
    EXPECT_EQ(scrollBarPart(bar, QStyle::SC_ScrollBarSlider), QRect(0, 0, 10, 28));
    EXPECT_TRUE(scrollBarPart(bar, QStyle::SC_ScrollBarAddLine).isEmpty());
    bar.setValue(bar.maximum());
    EXPECT_EQ(scrollBarPart(bar, QStyle::SC_ScrollBarSlider).bottom(), 299);
    bar.setRange(0, 300);
    bar.setValue(0);
    EXPECT_EQ(scrollBarPart(bar, QStyle::SC_ScrollBarSlider), QRect(0, 0, 10, 150));
    EXPECT_EQ(scrollBarPart(bar, QStyle::SC_ScrollBarAddPage), QRect(0, 150, 10, 150));
}

}  // namespace
}  // namespace tavo
