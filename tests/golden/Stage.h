// The real window over a made-up model, for scenes.
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

// The visible widgets of class `Widget` in `root`, in the order in which they were made. Unlike
// QObject::findChildren, it also finds classes without the macro Q_OBJECT.
template<typename Widget>
std::vector<Widget*> partsOf(const QWidget& root);

// A scene first arranges the model, then uses the window, which is made on its first use. Nothing
// depends on the machine, the user or the time, as main.cpp pins all settings. Main thread; one at
// a time.
class Stage {
public:
    // With twenty-nine applications, three of them favourites, and five categories, two of them
    // nested.
    explicit Stage(Look look);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    ModelHarness world{"it_IT"};

    // Replaces the applications. To be called before the window is made.
    void install(std::vector<std::string> names);

    // Uses another size than 980 × 640. To be called before the window is made.
    void setWindowSize(QSize size) { size_ = size; }

    LauncherWindow& window();
    LauncherView& view();
    TileGrid& grid();
    SidebarList& categories();

    // Each of these sends the events of a user's input.
    void type(const QString& text);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void click(QWidget& widget, QPoint point, Qt::MouseButton button = Qt::LeftButton);
    void pressButton(const QString& name);
    void select(const QString& category);
    void pointAt(QWidget& widget, QPoint point);
    // Right-clicks the tile of the application.
    void openTileMenu(const QString& application);
    // Makes the last opening of an application fail with `message`.
    void failOpening(const std::string& message);

    // The index of an application in the grid, or of a category in the sidebar.
    int tileOf(const QString& application);
    int rowOf(const QString& category);

    // The open menus and combo box lists, in the order in which they were opened.
    std::vector<QWidget*> popups();
    // The rectangle of a widget in the window's coordinates.
    QRect placeOf(const QWidget& widget);

    // Limits picture() to this part of the window.
    void crop(const QRect& part) { crop_ = part; }

    // Runs the event loop until the icons of all tiles in view are painted.
    void settle();

    // Like settle(), and then waits until scroll bars have faded.
    void rest();

    // A picture of the window and its popups on a plain background.
    QImage picture();

private:
    class Blended final : public Compositing {
    public:
        [[nodiscard]] bool active() const override { return true; }
        [[nodiscard]] bool blurs() const override { return false; }
        void blurBehind(std::uintptr_t, const std::vector<PixelRect>&) override {}
        [[nodiscard]] bool takesMargins() const override { return false; }
        void setMargin(std::uintptr_t, const WindowMargin&) override {}
    };

    QWindow* keyboard();
    void await(const std::function<bool()>& condition, const char* what);
    bool iconsAreThere();
    bool scrollBarsRest();

    Look look_;
    QSize size_;
    QRect crop_;
    QPoint pointer_;  // the last position on the screen
    Blended compositing_;
    std::shared_ptr<DrawnIcons> icons_;
    std::vector<DrawnIcons::Application> applications_;
    std::unique_ptr<LauncherWindow> window_;
    LauncherView* view_ = nullptr;  // owned by the window
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
