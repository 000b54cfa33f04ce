#include "app/status/NotifierStatusItem.h"

#include <cstdint>
#include <utility>

#include "app/status/StatusMenu.h"
#include "app/status/StatusSymbol.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

enum Entry : std::uint8_t {
    kOpen,
    kDivider,
    kQuit,
    kEntries,
};

std::string utf8(QStringView text) {
    return text.toUtf8().toStdString();
}

std::vector<StatusItemMenuEntry> menuEntries() {
    std::vector<StatusItemMenuEntry> entries(kEntries);
    entries[kOpen] = {.text = utf8(texts::kOpenLauncher), .controlKey = ""};
    entries[kQuit] = {.text = utf8(texts::kQuitLauncher), .controlKey = "q"};
    return entries;
}

std::vector<StatusItemImage> images() {
    std::vector<StatusItemImage> images;
    for (const int side : kSymbolSides) {
        const QImage symbol = statusSymbol(side).convertToFormat(QImage::Format_ARGB32);
        StatusItemImage image = {.side = side, .pixels = {}};
        for (int y = 0; y < side; ++y) {
            const auto* const row = reinterpret_cast<const QRgb*>(symbol.constScanLine(y));
            image.pixels.insert(image.pixels.end(), row, row + side);
        }
        images.push_back(std::move(image));
    }
    return images;
}

}  // namespace

NotifierStatusItem::NotifierStatusItem(StatusItemHosts& hosts, StatusMenu& menu,
                                       StatusItemActions actions)
    : hosts_(hosts), menu_(menu), actions_(std::move(actions)) {
    clicks_ = hosts_.clicked.subscribe([this](const StatusItemClick& click) { clicked(click); });
    hosts_.offer({.title = utf8(texts::kProgramName), .images = images(), .menu = menuEntries()});
}

NotifierStatusItem::~NotifierStatusItem() {
    hosts_.withdraw();
}

void NotifierStatusItem::clicked(const StatusItemClick& click) {
    if (click.entry == kQuit) {
        actions_.quit();
    } else if (click.menuAt && StatusMenu::canBePlaced()) {
        menu_.openInPanel({click.menuAt->x, click.menuAt->y});
    } else if (!click.entry || click.entry == kOpen) {
        actions_.show(click.request);
    }
}

}  // namespace tavo
