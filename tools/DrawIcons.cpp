// Makes the pictures of the application icon and of the mark from their drawings:
//
//   tavo_draw_icons RESOURCES
//
// A size with a drawing of its own, icons/SIZE/NAME.svg, is made from that one: its edges lie on
// whole pixels. The others are made from icons/NAME.svg.
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

#include "support/ApplicationId.h"

namespace {

const QString kIcon = QLatin1String(tavo::kApplicationId);
constexpr int kIconSides[] = {16, 22, 24, 32, 48, 64, 128, 256, 512};

// The window shows the mark at 34; four times that is sharp at every scale in use.
constexpr int kMarkSide = 136;

bool draw(const QString& drawing, int side, const QString& picture) {
    QSvgRenderer renderer(drawing);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    const bool drawn = renderer.isValid() && image.save(picture, "png");
    std::printf("%s: %d × %d%s\n", qPrintable(picture), side, side, drawn ? "" : " FAILED");
    return drawn;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: tavo_draw_icons RESOURCES\n");
        return 2;
    }
    const QString resources = QString::fromLocal8Bit(argv[1]);
    const QString mark = resources + QStringLiteral("/TavoLauncherMark");
    bool drawn = draw(mark + QStringLiteral(".svg"), kMarkSide, mark + QStringLiteral(".png"));
    for (const int side : kIconSides) {
        const QString own = QStringLiteral("%1/icons/%2/%3").arg(resources).arg(side).arg(kIcon);
        const QString any = resources + QStringLiteral("/icons/") + kIcon;
        const QString drawing = (QFile::exists(own + QStringLiteral(".svg")) ? own : any);
        drawn &= draw(drawing + QStringLiteral(".svg"), side, own + QStringLiteral(".png"));
    }
    return drawn ? 0 : 1;
}
