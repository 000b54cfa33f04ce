#include "ui/grid/AppTile.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <algorithm>

#include "ui/controls/PopupMenu.h"
#include "ui/grid/IconShadow.h"
#include "ui/look/Appearance.h"
#include "ui/look/DevicePixels.h"
#include "ui/look/ElidedText.h"
#include "ui/look/Metrics.h"
#include "ui/look/Symbols.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

// The font of the names and its measurements, made again when the desktop's font changes.
struct NameFont {
    NameFont()
        : base(QGuiApplication::font()),
          scale(textScale()),
          font(interfaceFont(kTileName)),
          metrics(font) {}

    QFont base;
    double scale;
    QFont font;
    QFontMetrics metrics;
};

const NameFont& nameFont() {
    static NameFont current;
    if (current.base != QGuiApplication::font() || current.scale != textScale()) {
        current = NameFont();
    }
    return current;
}

int nameHeight() {
    return nameFont().metrics.height();
}

// A name of the usual size may extend into the spaces beside a narrow tile.
int nameWidth() {
    return grownWithText(kLargestName);
}

int starSide() {
    return grownWithText(kStarHeight);
}

}  // namespace

QString AppTile::accessibleName() const {
    return texts::kOpenPrefix.toString() + displayText(app.name, 10'000);
}

QString AppTile::starName(bool favorite) {
    return (favorite ? texts::kRemoveFavorite : texts::kAddFavorite).toString();
}

const AppTile::Name& AppTile::measured() const {
    if (name.shown.isNull()) {
        const QString whole = displayText(app.name);
        name.shown = fitted(whole, nameFont().metrics, nameWidth());
        name.cutAtEnd = name.shown == whole ? QString() : name.shown;
    }
    return name;
}

void AppTile::cutInTheMiddle() {
    if (nameCutAtEnd() != shownName()) {
        return;  // the whole name fits, or is cut in the middle already
    }
    name.shown = fitted(displayText(app.name), nameFont().metrics, nameWidth(), Qt::ElideMiddle);
}

int AppTile::height() {
    return kIconSide + kTileSpacing + nameHeight() + kTileSpacing + starSide();
}

QRect AppTile::iconRect(const QRect& tile) {
    return {tile.center().x() - kIconSide / 2, tile.top(), kIconSide, kIconSide};
}

QRect AppTile::mainRect(const QRect& tile) {
    return {tile.center().x() - nameWidth() / 2, tile.top(), nameWidth(),
            kIconSide + kTileSpacing + nameHeight()};
}

QRect AppTile::starRect(const QRect& tile) {
    // The area to press is wider than the star, which would be hard to hit at twelve pixels.
    constexpr int kTarget = 24;
    const int width = std::max(kTarget, starSide());
    return {tile.center().x() - width / 2, tile.bottom() + 1 - starSide() - kTileSpacing / 2, width,
            starSide() + kTileSpacing};
}

void AppTile::paint(QPainter& painter, const QRect& tile, const Look& look) const {
    const Appearance& appearance = look.appearance;
    if (look.current) {
        painter.setPen(QPen(appearance.focusRing, appearance.focusWidth));
        painter.setBrush(appearance.selection);
        painter.drawRoundedRect(mainRect(tile).adjusted(-5, -6, 5, 5), kTileRadius, kTileRadius);
    }
    const QRect icon = iconRect(tile);
    if (look.icon != nullptr) {
        const double scale = look.icon->devicePixelRatio();
        const int margin = iconMarginPixels(scale);
        painter.drawImage(onDevicePixels(painter, icon.topLeft()) - QPointF(margin, margin) / scale,
                          *look.icon);
    }

    const QRect line(tile.center().x() - nameWidth() / 2, icon.bottom() + 1 + kTileSpacing,
                     nameWidth(), nameHeight());
    painter.setFont(nameFont().font);
    painter.setPen(appearance.text);
    drawElidedText(painter, line, kTileSpacing / 2, Qt::AlignCenter, shownName());

    if (showsStar()) {
        const QRect star(tile.center().x() - starSide() / 2, tile.bottom() + 1 - starSide(),
                         starSide(), starSide());
        paintStar(painter, star, appearance);
    }
}

void AppTile::paintStar(QPainter& painter, const QRect& box, const Appearance& appearance) const {
    if (!favorite) {
        drawSymbol(painter, box, u"star", appearance.secondaryText);
        return;
    }
    drawSymbol(painter, box, u"star.fill", appearance.star);
    if (appearance.starOutline.alpha() > 0) {
        drawSymbol(painter, box, u"star", appearance.starOutline);
    }
}

void AppTile::fillMenu(PopupMenu& menu) const {
    menu.addEntry((hidden ? texts::kShow : texts::kHide).toString(), hidden ? u"eye" : u"eye.slash",
                  toggleHidden);
    menu.addEntry(starToolTip(), u"star", toggleFavorite);
    PopupMenu* const submenu = menu.addSubmenu(texts::kCategories.toString());
    for (const LauncherCategory& category : categories) {
        submenu->addTick(menuText(category.name), assignedCategoryIDs.contains(category.id),
                         [toggle = toggleCategory, category] { toggle(category); });
    }
}

}  // namespace tavo
