#include "tests/golden/DrawnIcons.h"

#include <QFont>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <array>
#include <cmath>
#include <cstring>

#include "ui/look/Metrics.h"

namespace tavo {
namespace {

struct Colors {
    QColor top;
    QColor bottom;
};

constexpr std::array<Colors, 10> kColors = {{
    {QColor(90, 200, 250), QColor(0, 122, 255)},
    {QColor(255, 149, 0), QColor(255, 55, 95)},
    {QColor(48, 209, 88), QColor(10, 132, 255)},
    {QColor(191, 90, 242), QColor(94, 92, 230)},
    {QColor(255, 214, 10), QColor(255, 159, 10)},
    {QColor(100, 210, 255), QColor(94, 92, 230)},
    {QColor(255, 100, 130), QColor(191, 90, 242)},
    {QColor(162, 132, 94), QColor(112, 80, 52)},
    {QColor(142, 142, 147), QColor(72, 72, 74)},
    {QColor(52, 199, 89), QColor(0, 160, 120)},
}};

constexpr double kRadius = 15;
constexpr int kLetter = 30;

IconImage toIcon(const QImage& image) {
    IconImage icon{.side = image.width(), .pixels = {}};
    icon.pixels.resize(static_cast<std::size_t>(image.width()) *
                       static_cast<std::size_t>(image.height()));
    for (int y = 0; y < image.height(); ++y) {
        std::memcpy(icon.pixels.data() + static_cast<std::ptrdiff_t>(y) * image.width(),
                    image.constScanLine(y),
                    static_cast<std::size_t>(image.width()) * sizeof(std::uint32_t));
    }
    return icon;
}

IconImage drawn(const Colors& colors, const QString& letter, double scale) {
    const int side = static_cast<int>(std::lround(metrics::kIconSide * scale));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // Vertical, because PNG packs rows of equal pixels well.
    QLinearGradient gradient(0, 0, 0, side);
    gradient.setColorAt(0, colors.top);
    gradient.setColorAt(1, colors.bottom);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(image.rect(), kRadius * scale, kRadius * scale);
    QFont font;
    font.setPixelSize(static_cast<int>(std::lround(kLetter * scale)));
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(image.rect(), Qt::AlignCenter, letter);
    painter.end();
    return toIcon(image);
}

}  // namespace

DrawnIcons::DrawnIcons(const std::vector<Application>& applications, double scale) : scale_(scale) {
    std::size_t next = 0;
    for (const Application& application : applications) {
        icons_[application.path] = drawn(kColors.at(next++ % kColors.size()),
                                         QString::fromStdString(application.name).left(1), scale);
    }
}

IconImage DrawnIcons::icon(const std::string& path, int size, double scale) {
    const auto known = icons_.find(path);
    if (known != icons_.end() && size == metrics::kIconSide && scale == scale_) {
        return known->second;
    }
    return genericIcon(size, scale);
}

IconImage DrawnIcons::genericIcon(int size, double scale) {
    const int side = static_cast<int>(std::lround(size * scale));
    const auto count = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
    return {side, std::vector<std::uint32_t>(count, 0xff808080U)};
}

QColor DrawnIcons::colorAt(const std::string& path, int x, int y) const {
    const IconImage& icon = icons_.at(path);
    const auto pixel = [this](int logical) { return static_cast<int>(logical * scale_); };
    return QColor::fromRgba(
        icon.pixels.at(static_cast<std::size_t>(pixel(y) * icon.side + pixel(x))));
}

}  // namespace tavo
