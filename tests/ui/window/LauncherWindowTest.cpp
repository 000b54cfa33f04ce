#include <QApplication>
#include <QLineEdit>
#include <QPointer>
#include <QScreen>
#include <QWindow>
#include <QtTest/QTest>
#include <algorithm>
#include <map>
#include <optional>

#include <gtest/gtest.h>

#include "platform/Compositing.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/look/Appearance.h"
#include "ui/look/WindowShape.h"
#include "ui/window/LauncherWindow.h"

namespace tavo {
namespace {

class SwitchedCompositing final : public Compositing {
public:
    bool active() const override { return on; }
    bool blurs() const override { return on && blurring; }
    void blurBehind(std::uintptr_t window, const std::vector<PixelRect>& region) override {
        blurred[window] = region;
    }

    bool takesMargins() const override { return on && taking; }
    void setMargin(std::uintptr_t window, const WindowMargin& margin) override {
        margins[window] = margin;
    }

    void turn(bool active) {
        on = active;
        changed.emit();
    }

    bool on = true;
    bool blurring = false;
    bool taking = false;
    std::map<std::uintptr_t, WindowMargin> margins;
    std::map<std::uintptr_t, std::vector<PixelRect>> blurred;
};

class LauncherWindowTest : public testing::Test {
protected:
    LauncherWindowTest() {
        window.setContent(content_);
        window.onClose = [this] { ++closed; };
        window.onQuit = [this] { ++quit; };
    }

    void present() {
        window.present();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    QWidget* content() { return content_; }

    SwitchedCompositing compositing;
    LauncherWindow window{compositing};
    int closed = 0;
    int quit = 0;

private:
    QWidget* content_ = new QWidget(&window);
};

TEST_F(LauncherWindowTest, has_no_frame_and_is_called_tavo_launcher) {
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Tavo Launcher"));
}

TEST_F(LauncherWindowTest, cannot_be_made_smaller_than_760_by_520) {
    present();
    window.resize(10, 10);
    EXPECT_EQ(window.size(), QSize(760, 520));
    EXPECT_EQ(window.minimumSize(), QSize(760, 520));
}

TEST_F(LauncherWindowTest, is_first_shown_in_the_middle_of_the_screen_within_it) {
    present();
    const QRect area = window.screen()->availableGeometry();
    EXPECT_EQ(window.width(), qMax(760, qMin(980, area.width())));
    EXPECT_EQ(window.height(), qMax(520, qMin(640, area.height())));
    EXPECT_LE((window.geometry().center() - area.center()).manhattanLength(), 2);
}

TEST_F(LauncherWindowTest, stays_where_it_was_put_when_it_is_shown_again) {
    present();
    window.setGeometry(3, 4, 780, 600);
    window.hide();
    present();
    EXPECT_EQ(window.geometry(), QRect(3, 4, 780, 600));
}

TEST_F(LauncherWindowTest, is_whole_within_the_screen_when_it_is_shown_again) {
    present();
    const QRect area = window.screen()->availableGeometry();
    for (const QRect& place :
         {QRect(-100, -50, 770, 600), QRect(400, 500, 770, 600), QRect(9000, 9000, 5000, 5000)}) {
        window.hide();
        window.setGeometry(place);
        present();
        EXPECT_TRUE(area.contains(window.geometry()));
        EXPECT_EQ(window.size(), place.size().boundedTo(area.size()));
    }
}

TEST_F(LauncherWindowTest, says_when_it_is_shown_again_and_not_when_it_is_there_already) {
    int again = 0;
    window.onShownAgain = [&] {
        EXPECT_TRUE(window.isVisible());
        ++again;
    };
    present();
    present();
    compositing.turn(false);
    compositing.turn(true);
    EXPECT_EQ(again, 0);
    window.hide();
    present();
    EXPECT_EQ(again, 1);
}

TEST_F(LauncherWindowTest, its_corners_are_cut_only_while_nothing_blends_them) {
    present();
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(window.mask().isEmpty());
        compositing.turn(false);
        window.resize(900 + round, 600);
        EXPECT_FALSE(window.mask().contains(QPoint(1, 1)));
        EXPECT_TRUE(window.mask().contains(QPoint(450, 300)));
        EXPECT_TRUE(window.mask().contains(QPoint(450, 599)));
        compositing.turn(true);
    }
}

TEST_F(LauncherWindowTest, its_background_is_translucent_only_while_what_is_behind_is_blurred) {
    present();
    const auto opacity = [this] { return Appearance(content()->palette()).material.alphaF(); };
    EXPECT_EQ(opacity(), 1);
    compositing.blurring = true;
    compositing.turn(true);
    EXPECT_NEAR(opacity(), kBlurredMaterial, 0.01);
    compositing.turn(false);
    EXPECT_EQ(opacity(), 1);
    window.hide();
    compositing.turn(true);
    present();
    EXPECT_NEAR(opacity(), kBlurredMaterial, 0.01);
    setMoreContrast(true);
    QApplication::setPalette(paletteOfLook(true));
    QCoreApplication::processEvents();
    EXPECT_EQ(opacity(), 1);
    setMoreContrast(false);
    QApplication::setPalette(paletteOfLook(true));
    QCoreApplication::processEvents();
    EXPECT_NEAR(opacity(), kBlurredMaterial, 0.01);
    QApplication::setPalette(QPalette());
}

TEST_F(LauncherWindowTest, its_background_stays_translucent_when_the_look_changes) {
    compositing.blurring = true;
    present();
    for (const bool dark : {true, false}) {
        QApplication::setPalette(paletteOfLook(dark));
        QCoreApplication::processEvents();
        const Appearance appearance(content()->palette());
        EXPECT_EQ(appearance.dark, dark);
        EXPECT_NEAR(appearance.material.alphaF(), kBlurredMaterial, 0.01);
    }
    QApplication::setPalette(QPalette());
}

TEST_F(LauncherWindowTest, a_compositor_that_comes_finds_it_where_it_was_with_the_keyboard) {
    compositing.on = false;
    auto* const line = new QLineEdit(content());
    present();
    line->setFocus();
    window.setGeometry(30, 40, 800, 600);
    QPointer<QWindow> first = window.windowHandle();
    EXPECT_FALSE(first->requestedFormat().hasAlpha());
    compositing.turn(true);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_TRUE(window.windowHandle()->requestedFormat().hasAlpha());
    EXPECT_EQ(window.geometry(), QRect(30, 40, 800, 600));
    EXPECT_TRUE(line->hasFocus());
    EXPECT_EQ(closed, 0);
    EXPECT_FALSE(window.testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(LauncherWindowTest, says_that_the_window_system_has_another_window_of_it) {
    std::vector<WId> told;
    compositing.on = false;
    window.onAnother = [&] {
        EXPECT_FALSE(window.isVisible());
        told.push_back(window.winId());
    };
    present();
    EXPECT_TRUE(told.empty());
    compositing.turn(true);
    EXPECT_EQ(told, std::vector<WId>{window.winId()});
    window.hide();
    compositing.on = false;
    present();
    EXPECT_EQ(told.size(), 2U);
    EXPECT_EQ(told.back(), window.winId());
}

TEST_F(LauncherWindowTest, one_that_cannot_be_seen_is_blended_when_it_is_brought_forward) {
    compositing.on = false;
    present();
    window.showMinimized();
    compositing.turn(true);
    EXPECT_TRUE(window.isMinimized());
    EXPECT_FALSE(window.windowHandle()->requestedFormat().hasAlpha());
    EXPECT_FALSE(window.mask().isEmpty());
    EXPECT_EQ(Appearance(content()->palette()).material.alphaF(), 1);
    present();
    EXPECT_FALSE(window.isMinimized());
    EXPECT_TRUE(window.windowHandle()->requestedFormat().hasAlpha());
    EXPECT_TRUE(window.mask().isEmpty());
}

TEST_F(LauncherWindowTest, a_compositor_that_goes_leaves_the_same_window) {
    present();
    QPointer<QWindow> first = window.windowHandle();
    compositing.turn(false);
    compositing.turn(true);
    EXPECT_EQ(window.windowHandle(), first);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(LauncherWindowTest, a_hidden_one_stays_hidden_whatever_compositors_do) {
    present();
    window.hide();
    compositing.turn(false);
    compositing.turn(true);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(LauncherWindowTest, asks_for_blur_behind_its_round_shape_and_no_more) {
    compositing.blurring = true;
    present();
    const auto covers = [this](int x, int y) {
        const auto& region = compositing.blurred[window.internalWinId()];
        return std::any_of(region.begin(), region.end(), [&](const PixelRect& rect) {
            return x >= rect.x && x < rect.x + rect.width && y >= rect.y &&
                   y < rect.y + rect.height;
        });
    };
    const auto coversRound = [&](int width, int height) {
        return !covers(1, 1) && !covers(width - 2, 1) && !covers(1, height - 2) &&
               !covers(width - 2, height - 2) && covers(width / 2, height / 2) &&
               covers(width / 2, 0) && covers(0, height / 2) && covers(width - 1, height / 2) &&
               covers(width / 2, height - 1) && !covers(width, height / 2);
    };
    EXPECT_TRUE(coversRound(window.width(), window.height()));
    window.resize(901, 603);
    EXPECT_TRUE(coversRound(901, 603));
}

TEST_F(LauncherWindowTest, asks_for_no_blur_where_there_is_none) {
    present();
    EXPECT_TRUE(compositing.blurred.empty());
    compositing.blurring = true;
    compositing.turn(true);
    EXPECT_FALSE(compositing.blurred[window.internalWinId()].empty());
}

TEST_F(LauncherWindowTest, is_blended_where_the_desktop_blends_when_it_is_shown) {
    present();
    EXPECT_TRUE(window.windowHandle()->requestedFormat().hasAlpha());
    compositing.on = false;
    window.hide();
    present();
    EXPECT_FALSE(window.windowHandle()->requestedFormat().hasAlpha());
    EXPECT_FALSE(window.mask().contains(QPoint(1, 1)));
    compositing.on = true;
    window.hide();
    present();
    EXPECT_TRUE(window.windowHandle()->requestedFormat().hasAlpha());
    EXPECT_TRUE(window.mask().isEmpty());
}

// A window whose desktop takes margins.
class LauncherWindowWithMargin : public LauncherWindowTest {
protected:
    LauncherWindowWithMargin() { compositing.taking = true; }

    QRect visible() const { return window.geometry().marginsRemoved(window.contentsMargins()); }
    WindowMargin told() { return compositing.margins[window.internalWinId()]; }

    // The edges whose cursor the pointer gets at a point, as the cursor's shape.
    std::optional<Qt::CursorShape> cursorAt(QPoint point) {
        QTest::mouseMove(&window, point);
        const QCursor* const cursor = QGuiApplication::overrideCursor();
        return cursor == nullptr ? std::nullopt : std::optional(cursor->shape());
    }
};

TEST_F(LauncherWindowWithMargin, what_the_user_sees_has_the_usual_size_and_place) {
    present();
    const QRect area = window.screen()->availableGeometry();
    EXPECT_EQ(visible().width(), qMax(760, qMin(980, area.width())));
    EXPECT_EQ(visible().height(), qMax(520, qMin(640, area.height())));
    EXPECT_LE((visible().center() - area.center()).manhattanLength(), 2);
    EXPECT_EQ(content()->size(), visible().size());
    EXPECT_EQ(window.size(), visible().size() + QSize(56, 56));
}

TEST_F(LauncherWindowWithMargin, what_the_user_sees_gets_no_smaller_than_760_by_520) {
    present();
    window.resize(10, 10);
    EXPECT_EQ(visible().size(), QSize(760, 520));
    EXPECT_EQ(told().smallestWidth, 760);
    EXPECT_EQ(told().smallestHeight, 520);
}

TEST_F(LauncherWindowWithMargin, tells_the_desktop_its_margin_and_where_it_takes_input) {
    present();
    window.resize(1000, 700);
    EXPECT_EQ(told(), (WindowMargin{.width = 28,
                                    .input = {22, 22, 956, 656},
                                    .smallestWidth = 760,
                                    .smallestHeight = 520}));
}

TEST_F(LauncherWindowWithMargin, is_resized_at_what_the_user_sees_and_a_little_outside) {
    present();
    const QRect seen = window.contentsRect();
    const int middle = seen.center().y();
    EXPECT_EQ(cursorAt({seen.left() + 3, middle}), Qt::SizeHorCursor);
    EXPECT_EQ(cursorAt({seen.left() - 5, middle}), Qt::SizeHorCursor);
    EXPECT_EQ(cursorAt({seen.right() + 5, middle}), Qt::SizeHorCursor);
    EXPECT_EQ(cursorAt({seen.center().x(), seen.bottom() + 5}), Qt::SizeVerCursor);
    EXPECT_EQ(cursorAt({seen.left() - 4, seen.top() - 4}), Qt::SizeFDiagCursor);
    EXPECT_EQ(cursorAt({seen.right() + 4, seen.top() - 4}), Qt::SizeBDiagCursor);
    EXPECT_EQ(cursorAt(seen.center()), std::nullopt);
    EXPECT_EQ(cursorAt({seen.left() - 8, middle}), std::nullopt);
}

TEST_F(LauncherWindowWithMargin, has_no_margin_while_it_is_maximised) {
    present();
    const QSize before = visible().size();
    window.showMaximized();
    ASSERT_TRUE(QTest::qWaitFor([this] { return content()->size() == window.size(); }));
    EXPECT_EQ(told().width, 0);
    EXPECT_EQ(windowRadius(*content()), 0);
    window.showNormal();
    ASSERT_TRUE(QTest::qWaitFor([&] { return content()->size() == before; }));
    EXPECT_EQ(window.size(), before + QSize(56, 56));
    EXPECT_EQ(told().width, 28);
    EXPECT_EQ(windowRadius(*content()), 18);
}

TEST_F(LauncherWindowWithMargin, what_the_user_sees_stays_where_it_is_when_margins_come_and_go) {
    compositing.taking = false;
    present();
    window.setGeometry(100, 90, 800, 600);
    for (const bool taking : {true, false, true}) {
        compositing.taking = taking;
        compositing.changed.emit();
        EXPECT_EQ(window.contentsMargins().left(), taking ? 28 : 0);
        EXPECT_EQ(visible(), QRect(100, 90, 800, 600));
        EXPECT_EQ(told().width, taking ? 28 : 0);
    }
}

TEST_F(LauncherWindowWithMargin, asks_for_blur_counted_from_the_corner_that_the_user_sees) {
    compositing.blurring = true;
    present();
    int right = 0;
    int bottom = 0;
    for (const PixelRect& part : compositing.blurred[window.internalWinId()]) {
        right = std::max(right, part.x + part.width);
        bottom = std::max(bottom, part.y + part.height);
    }
    EXPECT_EQ(QSize(right, bottom), visible().size());
}

TEST_F(LauncherWindowWithMargin, is_as_large_to_a_screen_reader_as_to_the_eye) {
    installAccessibleItems();
    present();
    const QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(&window);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->rect(), visible());
}

TEST_F(LauncherWindowWithMargin, its_shadow_fades_to_nothing_and_is_not_below_the_window) {
    present();
    QImage image(window.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    window.render(&image, {}, {}, QWidget::RenderFlags());
    const auto darkness = [&](int x, int y) { return qAlpha(image.pixel(x, y)); };
    const QRect seen = window.contentsRect();
    const QPoint middle = seen.center();
    for (int outside = 1; outside < 28; ++outside) {
        for (const auto& [nearer, farther] :
             {std::pair(QPoint(seen.left() - outside, middle.y()), QPoint(-1, 0)),
              std::pair(QPoint(seen.right() + outside, middle.y()), QPoint(1, 0)),
              std::pair(QPoint(middle.x(), seen.top() - outside), QPoint(0, -1)),
              std::pair(QPoint(middle.x(), seen.bottom() + outside), QPoint(0, 1))}) {
            const QPoint next = nearer + farther;
            EXPECT_GE(darkness(nearer.x(), nearer.y()), darkness(next.x(), next.y()));
        }
    }
    EXPECT_GT(darkness(middle.x(), seen.bottom() + 1), 60);
    EXPECT_GT(darkness(middle.x(), seen.top() - 1), 30);
    EXPECT_GT(darkness(middle.x(), seen.bottom() + 1), darkness(middle.x(), seen.top() - 1));
    EXPECT_EQ(darkness(seen.left() - 1, middle.y()), darkness(seen.right() + 1, middle.y()));
    for (const QPoint corner : {QPoint(0, 0), window.rect().topRight(), window.rect().bottomLeft(),
                                window.rect().bottomRight(), QPoint(0, middle.y()), middle}) {
        EXPECT_EQ(darkness(corner.x(), corner.y()), 0);
    }
}

TEST_F(LauncherWindowTest, closing_is_left_to_its_owner) {
    present();
    window.close();
    EXPECT_TRUE(window.isVisible());
    QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(closed, 2);
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(quit, 1);
}

}  // namespace
}  // namespace tavo
