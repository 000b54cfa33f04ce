// The real window over a made-up world, to be brought into a state and looked at.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/Compositing.h"
#include "tests/catalogue/ModelHarness.h"
#include "tests/golden/DrawnIcons.h"

class QWindow;

namespace tavo {

class LauncherView;
class LauncherWindow;
class TileGrid;
class SidebarList;

enum class Look { Light, Dark };

// Every widget of that class in `root` that is shown, in the order in which they were made. For
// classes of our own, which the toolkit's search does not tell apart.
template<typename Widget>
std::vector<Widget*> partsOf(const QWidget& root);

// Nothing here depends on the machine, the user or the time: main.cpp pins the rest. The world is
// arranged first; the window is made when it is first asked for. Main thread; one at a time.
class Stage {
public:
    // With the twenty-nine applications of the catalogue, three of them favourites, and five
    // categories, two of them nested.
    explicit Stage(Look look);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    ModelHarness world{"it_IT"};

    // Replaces the applications. Before the window is made.
    void install(std::vector<std::string> names);

    // Has another size than the usual 980 × 640. Before the window is made.
    void setWindowSize(QSize size) { size_ = size; }

    LauncherWindow& window();
    LauncherView& view();
    TileGrid& grid();
    SidebarList& categories();

    // As a user does it.
    void type(const QString& text);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void click(QWidget& widget, QPoint point, Qt::MouseButton button = Qt::LeftButton);
    void pressButton(const QString& name);
    void select(const QString& category);
    void pointAt(QWidget& widget, QPoint point);
    // Right-clicks the application's tile.
    void openTileMenu(const QString& application);
    // The application that was opened last could not be.
    void failOpening(const std::string& message);

    // The position of an application in the grid, and of a row in the sidebar.
    int tileOf(const QString& application);
    int rowOf(const QString& category);

    // Menus and opened lists of choices, those that were opened first in front of the vector.
    std::vector<QWidget*> popups();
    // Where a widget lies in the window.
    QRect placeOf(const QWidget& widget);

    // From now on, picture() is only this part of the window.
    void crop(const QRect& part) { crop_ = part; }

    // Lets everything happen that is about to: afterwards the icons in view are there.
    void settle();

    // The same, and nothing is left that would go by itself.
    void rest();

    // What a person sees: the window and its popups on a plain desktop.
    QImage picture();

private:
    class Blended final : public Compositing {
    public:
        [[nodiscard]] bool active() const override { return true; }
        [[nodiscard]] bool blurs() const override { return false; }
        void blurBehind(std::uintptr_t, const std::vector<PixelRect>&) override {}
    };

    QWindow* keyboard();
    void await(const std::function<bool()>& condition, const char* what);
    bool iconsAreThere();
    bool scrollBarsRest();

    Look look_;
    QSize size_;
    QRect crop_;
    QPoint pointer_;  // on the screen, where it was last
    Blended compositing_;
    std::unique_ptr<DrawnIcons> icons_;
    std::vector<DrawnIcons::Application> applications_;
    std::unique_ptr<LauncherWindow> window_;
    LauncherView* view_ = nullptr;  // the window's
};

template<typename Widget>
std::vector<Widget*> partsOf(const QWidget& root) {
    std::vector<Widget*> found;
    for (QWidget* const widget : root.findChildren<QWidget*>()) {
        if (auto* const part = dynamic_cast<Widget*>(widget); part != nullptr) {
            if (widget->isVisible()) {
                found.push_back(part);
            }
        }
    }
    return found;
}

}  // namespace tavo
