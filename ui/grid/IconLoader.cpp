#include "ui/grid/IconLoader.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "platform/IconSource.h"
#include "ui/look/Metrics.h"

namespace tavo {
namespace {

constexpr unsigned kMostWorkers = 2;

// Enough for a large window and a screen of scrolling in either direction. More would only take
// memory, as an icon is read from the disk again within milliseconds.
constexpr std::size_t kMostIcons = 96;

constexpr double kShadowOpacity = 0.15;

// One pass of a box blur along the columns of a square picture. Handles all columns of a row
// together, which the compiler vectorizes.
void blurDown(const std::vector<float>& from, std::vector<float>& to, int side, int radius) {
    const float weight = 1.0F / static_cast<float>(2 * radius + 1);
    const auto row = [side](int y) {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(side);
    };
    std::vector<float> sums(static_cast<std::size_t>(side), 0.0F);
    const auto add = [&](int y, float sign) {
        const float* const line = &from[row(y)];
        for (std::size_t x = 0; x < sums.size(); ++x) {
            sums[x] += sign * line[x];
        }
    };
    for (int y = 0; y <= radius && y < side; ++y) {
        add(y, 1);
    }
    for (int y = 0; y < side; ++y) {
        float* const line = &to[row(y)];
        for (std::size_t x = 0; x < sums.size(); ++x) {
            line[x] = sums[x] * weight;
        }
        if (y + radius + 1 < side) {
            add(y + radius + 1, 1);
        }
        if (y - radius >= 0) {
            add(y - radius, -1);
        }
    }
}

void transpose(const std::vector<float>& from, std::vector<float>& to, int side) {
    const auto count = static_cast<std::size_t>(side);
    for (std::size_t y = 0; y < count; ++y) {
        for (std::size_t x = 0; x < count; ++x) {
            to[x * count + y] = from[y * count + x];
        }
    }
}

QImage toImage(const IconImage& icon) {
    QImage image(icon.side, icon.side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < icon.side; ++y) {
        std::memcpy(image.scanLine(y),
                    icon.pixels.data() + static_cast<std::ptrdiff_t>(y) * icon.side,
                    static_cast<std::size_t>(icon.side) * sizeof(std::uint32_t));
    }
    return image;
}

}  // namespace

QImage withShadow(const QImage& icon, double scale) {
    const int margin = IconLoader::marginPixels(scale);
    const int side = icon.width() + 2 * margin;
    const auto at = [side](int x, int y) { return static_cast<std::size_t>(y * side + x); };
    const auto area = static_cast<std::size_t>(side * side);

    std::vector<float> alpha(area, 0.0F);
    const int offset = static_cast<int>(std::lround(metrics::kIconShadowOffset * scale));
    for (int y = 0; y < icon.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(icon.constScanLine(y));
        for (int x = 0; x < icon.width(); ++x) {
            alpha[at(x + margin, y + margin + offset)] = static_cast<float>(qAlpha(line[x]));
        }
    }
    // Three box blurs look like a Gaussian blur. Its standard deviation is half the shadow's
    // radius.
    const double deviation = metrics::kIconShadowRadius * scale / 2;
    const int radius = std::max(1, static_cast<int>(std::lround(deviation * 0.94)));
    std::vector<float> other(area);
    for (int direction = 0; direction < 2; ++direction) {
        for (int pass = 0; pass < 3; ++pass) {
            blurDown(alpha, other, side, radius);
            alpha.swap(other);
        }
        transpose(alpha, other, side);
        alpha.swap(other);
    }

    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < side; ++x) {
            const float darkness = static_cast<float>(kShadowOpacity) * alpha[at(x, y)];
            line[x] = static_cast<QRgb>(darkness + 0.5F) << 24U;
        }
    }
    QPainter painter(&image);
    painter.drawImage(margin, margin, icon);
    painter.end();
    image.setDevicePixelRatio(scale);
    return image;
}

IconLoader::IconLoader(IconSource& source, MainQueue& mainQueue)
    : source_(source), mainThread_(mainQueue) {}

IconLoader::~IconLoader() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    for (std::thread& worker : workers_) {
        worker.join();
    }
}

int IconLoader::margin() {
    return 2 * metrics::kIconShadowRadius;
}

int IconLoader::marginPixels(double scale) {
    return static_cast<int>(std::lround(margin() * scale));
}

void IconLoader::want(const std::vector<std::string>& paths, double scale) {
    wanted_ = paths;
    scale_ = scale;
    std::deque<Request> requests;
    for (const std::string& path : paths) {
        const auto known = icons_.find(path);
        if (known == icons_.end() || known->second.scale != scale ||
            known->second.generation != generation_) {
            requests.push_back({path, scale, generation_});
        }
    }
    const bool needed = !requests.empty();
    {
        const std::lock_guard lock(mutex_);
        requests_ = std::move(requests);
    }
    if (needed) {
        startWorkers();
        changed_.notify_all();
    }
}

const QImage* IconLoader::find(const std::string& path) const {
    const auto known = icons_.find(path);
    return known != icons_.end() ? &known->second.image : nullptr;
}

void IconLoader::refresh() {
    ++generation_;
    source_.refresh();
}

void IconLoader::startWorkers() {
    if (!workers_.empty()) {
        return;
    }
    const unsigned count = std::clamp(std::thread::hardware_concurrency(), 1U, kMostWorkers);
    for (unsigned i = 0; i < count; ++i) {
        workers_.emplace_back([this] {
            std::unique_lock lock(mutex_);
            for (;;) {
                changed_.wait(lock, [this] { return ended_ || !requests_.empty(); });
                if (ended_) {
                    return;
                }
                Request request = std::move(requests_.front());
                requests_.pop_front();
                lock.unlock();
                const IconImage icon =
                    source_.icon(request.path, metrics::kIconSide, request.scale);
                QImage image = withShadow(toImage(icon), request.scale);
                lock.lock();
                answers_.push_back({std::move(request), std::move(image)});
                // The first answer in the list wakes the main thread, which then takes all answers
                // at once.
                if (answers_.size() == 1) {
                    mainThread_.post([this] { takeAnswers(); });
                }
            }
        });
    }
}

void IconLoader::takeAnswers() {
    std::vector<Answer> answers;
    {
        const std::lock_guard lock(mutex_);
        answers.swap(answers_);
    }
    for (Answer& answer : answers) {
        // An icon for an earlier scale is of use only while there is no icon at all.
        if (answer.request.scale != scale_ && icons_.contains(answer.request.path)) {
            continue;
        }
        icons_[answer.request.path] = {std::move(answer.image), answer.request.scale,
                                       answer.request.generation};
    }
    dropSurplus();
    for (const Answer& answer : answers) {
        loaded.emit(answer.request.path);
    }
}

void IconLoader::dropSurplus() {
    if (icons_.size() <= kMostIcons) {
        return;
    }
    const std::unordered_set<std::string> keep(wanted_.begin(), wanted_.end());
    for (auto icon = icons_.begin(); icon != icons_.end() && icons_.size() > kMostIcons;) {
        icon = keep.contains(icon->first) ? std::next(icon) : icons_.erase(icon);
    }
}

}  // namespace tavo
