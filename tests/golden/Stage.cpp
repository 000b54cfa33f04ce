#include "tests/golden/Stage.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QWindow>
#include <QtTest/QTest>
#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

#include "ui/controls/ThinScrollBar.h"
#include "ui/grid/AppTile.h"
#include "ui/grid/TileGrid.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Texts.h"
#include "ui/sidebar/SidebarList.h"
#include "ui/window/LauncherView.h"
#include "ui/window/LauncherWindow.h"

namespace tavo {
namespace {

const std::vector<std::string> kCatalogue = {
    "Agenda",
    "App Store Locale",
    "Archivio",
    "Blocco note",
    "Calcolatrice",
    "Calendario",
    "Codice",
    "Contatti",
    "Disegno",
    "Editor",
    "Foto",
    "Giochi",
    "Immagini",
    "Impostazioni",
    "Mappe",
    "Messaggi",
    "Monitor di sistema",
    "Musica",
    "Orologio",
    "Posta",
    "Presentazioni",
    "Registratore vocale",
    "Schermate",
    "Terminale",
    "Testi",
    "Traduttore",
    "Viaggi",
    "Video",
    "Vocabolario",
};

QPalette paletteOf(Look look) {
    const bool dark = look == Look::Dark;
    QPalette palette = paletteOfLook(dark);
    palette.setColor(QPalette::Highlight, dark ? QColor(10, 132, 255) : QColor(0, 122, 255));
    return palette;
}

QColor desktopOf(Look look) {
    return look == Look::Dark ? QColor(36, 36, 58) : QColor(198, 210, 234);
}

template<typename Part>
Part& onlyPart(const QWidget& root) {
    const std::vector<Part*> found = partsOf<Part>(root);
    if (found.size() != 1) {
        throw std::logic_error("not one such part");
    }
    return *found.front();
}

template<typename Predicate>
int indexWhere(const AccessibleItems& items, Predicate matches) {
    for (int index = 0; index < items.itemCount(); ++index) {
        if (matches(items.itemName(index))) {
            return index;
        }
    }
    throw std::logic_error("no such item");
}

// How deep a popup is below the window: a submenu is deeper than its menu.
int depthOf(const QWidget* widget) {
    int depth = 0;
    for (; widget != nullptr; widget = widget->parentWidget()) {
        ++depth;
    }
    return depth;
}

// What the window paints, on a transparent background.
QImage painted(QWidget& window) {
    const qreal scale = window.devicePixelRatioF();
    QImage image(window.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    window.render(&image, {}, {}, QWidget::DrawWindowBackground | QWidget::DrawChildren);
    return image;
}

}  // namespace

Stage::Stage(Look look) : look_(look), size_(metrics::kFirstWidth, metrics::kFirstHeight) {
    // Moves the pointer away from where the new window will appear.
    QCursor::setPos(0, 0);
    install(kCatalogue);
    world.storeFavorites({"Calcolatrice", "Codice", "Terminale"});
    world.store({{"work", "Lavoro"},
                 {"projects", "Progetti", "work"},
                 {"north", "Cliente Nord", "projects"},
                 {"creative", "Creatività"},
                 {"utility", "Utility"}});
    world.storeRules({{"work", "codice, terminale, git"}, {"creative", "foto, disegno, video"}});
    world.storeAssignments({{"projects", {"Agenda", "Contatti", "Presentazioni"}},
                            {"north", {"Posta"}},
                            {"utility", {"Calcolatrice", "Orologio"}}});
    world.storeRecent({"Posta", "Codice", "Mappe", "Foto"});
}

Stage::~Stage() {
    for (QWidget* const popup : popups()) {
        popup->close();
    }
    window_.reset();
    setMoreContrast(false);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Stage::install(std::vector<std::string> names) {
    applications_.clear();
    for (const std::string& name : names) {
        applications_.push_back({ModelHarness::pathOf(name), name});
    }
    world.install(names);
}

LauncherWindow& Stage::window() {
    if (window_ != nullptr) {
        return *window_;
    }
    QApplication::setPalette(paletteOf(look_));
    icons_ = std::make_shared<DrawnIcons>(applications_, qApp->devicePixelRatio());
    window_ = std::make_unique<LauncherWindow>(compositing_);
    view_ = new LauncherView({.platform = world.platform(),
                              .text = TextRules("it_IT"),
                              .icons = icons_,
                              .mainQueue = world.mainQueue},
                             window_.get());
    view_->onClose = [] {};
    view_->onEscape = [] {};
    window_->onClose = [] {};
    window_->onQuit = [] {};
    window_->setContent(view_);
    window_->present();
    window_->resize(size_);
    if (!QTest::qWaitForWindowActive(window_.get())) {
        throw std::runtime_error("the window did not become active");
    }
    settle();
    return *window_;
}

LauncherView& Stage::view() {
    window();
    return *view_;
}

TileGrid& Stage::grid() {
    return onlyPart<TileGrid>(window());
}

SidebarList& Stage::categories() {
    return onlyPart<SidebarList>(window());
}

// The window that gets key events: the newest popup, else the window itself, as on a desktop.
QWindow* Stage::keyboard() {
    QWidget* const popup = QApplication::activePopupWidget();
    return (popup != nullptr ? *popup : window()).windowHandle();
}

void Stage::type(const QString& text) {
    for (const QChar letter : text) {
        QTest::sendKeyEvent(QTest::Click, keyboard(),
                            static_cast<Qt::Key>(letter.toUpper().unicode()), letter,
                            Qt::NoModifier);
    }
    settle();
}

void Stage::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(keyboard(), key, modifiers);
    settle();
}

void Stage::click(QWidget& widget, QPoint point, Qt::MouseButton button) {
    QWidget& target = *widget.window();
    const QPoint place = widget.mapTo(&target, point);
    QTest::mouseClick(target.windowHandle(), button, {}, place);
    pointer_ = target.mapToGlobal(place);
    settle();
}

void Stage::pressButton(const QString& name) {
    for (auto* const button : partsOf<QAbstractButton>(window())) {
        if (button->text() == name || button->toolTip() == name) {
            click(*button, button->rect().center());
            return;
        }
    }
    throw std::logic_error("no such button");
}

void Stage::select(const QString& category) {
    SidebarList& list = categories();
    click(*list.viewport(), list.itemRect(rowOf(category)).center());
}

// Moves over an empty part of the toolbar first, because Qt sends an enter event only for a pointer
// that comes from another widget.
void Stage::pointAt(QWidget& widget, QPoint point) {
    QWidget& target = *widget.window();
    for (const QPoint place : {QPoint(target.width() / 2, 10), widget.mapTo(&target, point)}) {
        QTest::mouseMove(target.windowHandle(), place);
        pointer_ = target.mapToGlobal(place);
    }
    settle();
}

void Stage::openTileMenu(const QString& application) {
    TileGrid& tiles = grid();
    const QRect icon = AppTile::iconRect(tiles.itemRect(tileOf(application)));
    pointAt(*tiles.viewport(), icon.center());
    click(*tiles.viewport(), icon.center(), Qt::RightButton);
}

void Stage::failOpening(const std::string& message) {
    world.workspace.complete(world.workspace.openings.size() - 1, std::nullopt, Error{message});
    settle();
}

int Stage::tileOf(const QString& application) {
    const QString name = texts::kOpenPrefix.toString() + application;
    return indexWhere(grid(), [&](const QString& item) { return item == name; });
}

int Stage::rowOf(const QString& category) {
    return indexWhere(categories(), [&](const QString& item) { return item == category; });
}

std::vector<QWidget*> Stage::popups() {
    std::vector<QWidget*> found;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget != window_.get()) {
            found.push_back(widget);
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const QWidget* one, const QWidget* other) {
        return depthOf(one) < depthOf(other);
    });
    return found;
}

QRect Stage::placeOf(const QWidget& widget) {
    return {window().mapFromGlobal(widget.mapToGlobal(QPoint())), widget.size()};
}

// Whether all icons in view are painted. The grid does not tell, so the picture of the grid is
// checked for the icons' colours.
bool Stage::iconsAreThere() {
    constexpr int kAcross = 20;  // a point beside the letter and away from the corners
    constexpr int kNear = 2;     // the tolerance for colours
    TileGrid& tiles = grid();
    const QImage image = painted(*tiles.viewport());
    for (int index = 0; index < tiles.itemCount(); ++index) {
        const QRect icon = AppTile::iconRect(tiles.itemRect(index));
        const QRect seen = icon.intersected(tiles.viewport()->rect());
        if (seen.isEmpty()) {
            continue;
        }
        const QPoint point(icon.left() + kAcross, seen.center().y());
        const QColor expected =
            icons_->colorAt(tiles.itemKey(index), kAcross, point.y() - icon.top());
        const QColor actual = image.pixelColor(point * image.devicePixelRatio());
        if (std::abs(actual.red() - expected.red()) > kNear ||
            std::abs(actual.green() - expected.green()) > kNear ||
            std::abs(actual.blue() - expected.blue()) > kNear) {
            return false;
        }
    }
    return true;
}

// True when all scroll bars have faded, except those under the pointer and those that never fade.
bool Stage::scrollBarsRest() {
    constexpr int kKept =
        40;  // a little more than the distance at which the pointer keeps a bar visible
    const std::vector<ThinScrollBar*> bars = partsOf<ThinScrollBar>(window());
    return std::all_of(bars.begin(), bars.end(), [this](const ThinScrollBar* bar) {
        const QRect place(bar->mapToGlobal(QPoint()), bar->size());
        return bar->isKept() || place.adjusted(-kKept, 0, kKept, 0).contains(pointer_);
    });
}

void Stage::await(const std::function<bool()>& condition, const char* what) {
    const bool met = QTest::qWaitFor(
        [&] {
            world.mainQueue.run();
            QCoreApplication::sendPostedEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return condition();
        },
        30'000);
    if (!met) {
        throw std::runtime_error(what);
    }
}

void Stage::settle() {
    await([this] { return iconsAreThere(); }, "an icon did not come");
}

void Stage::rest() {
    settle();
    await([this] { return scrollBarsRest(); }, "a scroll bar did not go");
}

QImage Stage::picture() {
    rest();
    const QRect frame = window().geometry();
    QRect whole = frame;
    for (const QWidget* const popup : popups()) {
        whole |= popup->geometry();
    }
    if (!crop_.isNull()) {
        whole = crop_.translated(frame.topLeft());
    }
    const qreal scale = window().devicePixelRatioF();
    QImage image(whole.size() * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(desktopOf(look_));
    QPainter painter(&image);
    std::vector<QWidget*> windows = popups();
    windows.insert(windows.begin(), window_.get());
    for (QWidget* const shown : windows) {
        const QPoint corner = shown->geometry().topLeft() - whole.topLeft();
        painter.setClipping(false);
        if (!shown->mask().isEmpty()) {
            painter.setClipRegion(shown->mask().translated(corner));
        }
        painter.drawImage(corner, painted(*shown));
    }
    return image;
}

}  // namespace tavo
