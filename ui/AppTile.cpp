#include "ui/AppTile.h"

#include <QFontMetrics>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <algorithm>

#include "ui/Appearance.h"
#include "ui/DisplayText.h"
#include "ui/IconLoader.h"
#include "ui/Metrics.h"
#include "ui/Symbols.h"
#include "ui/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

const QFont& nameFont() {
    static const QFont font = interfaceFont(kTileName);
    return font;
}

int nameHeight() {
    static const int height = QFontMetrics(nameFont()).height();
    return height;
}

QIcon menuIcon(QStringView symbol, const Appearance& appearance, const QMenu& menu) {
    return QIcon(symbolPixmap(symbol, appearance.text, kSymbol, menu.devicePixelRatioF()));
}

}  // namespace

QString AppTile::accessibleName() const {
    return texts::kOpenPrefix.toString() + displayText(app.name, 10'000);
}

QString AppTile::starToolTip() const {
    return (favorite ? texts::kRemoveFavorite : texts::kAddFavorite).toString();
}

int AppTile::height() {
    return kIconSide + kTileSpacing + nameHeight() + kTileSpacing + kStarHeight;
}

QRect AppTile::iconRect(const QRect& tile) {
    return {tile.center().x() - kIconSide / 2, tile.top(), kIconSide, kIconSide};
}

QRect AppTile::mainRect(const QRect& tile) {
    const int width = std::min(tile.width(), std::max(kIconSide, kLargestName));
    return {tile.center().x() - width / 2, tile.top(), width,
            kIconSide + kTileSpacing + nameHeight()};
}

QRect AppTile::starRect(const QRect& tile) {
    // Wider than the star: a target of twelve pixels is hard to hit.
    constexpr int kTarget = 24;
    return {tile.center().x() - kTarget / 2, tile.bottom() + 1 - kStarHeight - kTileSpacing / 2,
            kTarget, kStarHeight + kTileSpacing};
}

void AppTile::paint(QPainter& painter, const QRect& tile, const Look& look) const {
    const Appearance& appearance = look.appearance;
    if (look.current) {
        painter.setPen(QPen(appearance.accent, 2));
        painter.setBrush(appearance.selection);
        painter.drawRoundedRect(mainRect(tile).adjusted(-5, -6, 5, 5), kTileRadius, kTileRadius);
    }
    const QRect icon = iconRect(tile);
    if (look.icon != nullptr) {
        painter.drawImage(icon.topLeft() - QPoint(IconLoader::margin(), IconLoader::margin()),
                          *look.icon);
    }

    const int width = std::min(tile.width(), kLargestName);
    const QRect name(tile.center().x() - width / 2, icon.bottom() + 1 + kTileSpacing, width,
                     nameHeight());
    painter.setFont(nameFont());
    painter.setPen(appearance.text);
    const QString shown = displayText(app.name);
    painter.drawText(name, Qt::AlignCenter | Qt::TextSingleLine,
                     QFontMetrics(nameFont()).elidedText(shown, Qt::ElideRight, width));

    if (showsStar()) {
        const QRect star(tile.center().x() - kStarHeight / 2, tile.bottom() + 1 - kStarHeight,
                         kStarHeight, kStarHeight);
        drawSymbol(painter, star, favorite ? u"star.fill" : u"star",
                   favorite ? appearance.star : appearance.secondaryText);
    }
}

void AppTile::fillMenu(QMenu& menu, const Appearance& appearance) const {
    menu.addAction(menuIcon(hidden ? u"eye" : u"eye.slash", appearance, menu),
                   (hidden ? texts::kShow : texts::kHide).toString(), toggleHidden);
    menu.addAction(menuIcon(u"star", appearance, menu), starToolTip(), toggleFavorite);
    QMenu* const submenu = menu.addMenu(texts::kCategories.toString());
    for (const LauncherCategory& category : categories) {
        QAction* const entry = submenu->addAction(
            menuText(category.name), [toggle = toggleCategory, category] { toggle(category); });
        if (assignedCategoryIDs.contains(category.id)) {
            entry->setIcon(menuIcon(u"checkmark", appearance, menu));
        }
    }
}

}  // namespace tavo
