#include "ui/grid/IconLoader.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <unordered_set>
#include <utility>

#include "platform/IconSource.h"
#include "ui/grid/IconShadow.h"
#include "ui/look/Metrics.h"

namespace tavo {
namespace {

using namespace std::chrono_literals;

constexpr unsigned kMostWorkers = 2;
// At most so many late workers are replaced by new ones. If more wait for a disk, the other icons
// wait too.
constexpr unsigned kMostLate = 8;
constexpr auto kBetweenLooks = 300ms;
constexpr int kMostLooks = 4;  // an icon that was seen under way so often is late
constexpr auto kIdleTime = 5s;
constexpr auto kFarewell = 200ms;

// Enough for a large window and a screen of scrolling in either direction. More would only take
// memory, as an icon is read from the disk again within milliseconds.
constexpr std::size_t kMostIcons = 96;

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

// What the loader and its workers share. A worker that finishes after the loader's destructor has
// run learns that from `ended` and drops its icon.
struct IconLoader::Shared {
    struct Work {
        Request request;
        int looks = 0;  // how often watchWorkers() found it unfinished

        [[nodiscard]] bool late() const { return looks >= kMostLooks; }
    };

    std::shared_ptr<IconSource> source;
    std::function<void()> answered;  // called for the first of `answers`, with the mutex locked

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Request> requests;
    std::list<Work> underWay;
    std::vector<Answer> answers;
    unsigned workers = 0;
    bool ended = false;

    [[nodiscard]] unsigned lateWorkers() const {
        return static_cast<unsigned>(std::ranges::count_if(underWay, &Work::late));
    }
    // Whether a worker has begun with it or, late, with an earlier request for the same icon.
    [[nodiscard]] bool hasBegun(const Request& request) const {
        return std::ranges::any_of(underWay,
                                   [&](const Work& work) {
                                       return work.request == request ||
                                              (work.late() && work.request.path == request.path);
                                   }) ||
               std::ranges::find(answers, request, &Answer::request) != answers.end();
    }
    // The requests that wait for a disk: the late ones, and all when no worker is left for them.
    [[nodiscard]] std::vector<Request> stuck() const {
        std::vector<Request> found;
        for (const Work& work : underWay) {
            if (work.late()) {
                found.push_back(work.request);
            }
        }
        if (workers == found.size()) {
            found.insert(found.end(), requests.begin(), requests.end());
        }
        return found;
    }
};

IconLoader::IconLoader(std::shared_ptr<IconSource> source, MainQueue& mainQueue)
    : poster_(mainQueue), shared_(std::make_shared<Shared>()) {
    shared_->source = std::move(source);
    shared_->answered = [this] { poster_.post([this] { takeAnswers(); }); };
}

IconLoader::~IconLoader() {
    std::unique_lock lock(shared_->mutex);
    shared_->ended = true;
    shared_->changed.notify_all();
    shared_->changed.wait_for(lock, kFarewell, [this] { return shared_->workers == 0; });
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
    std::vector<Request> stuck;
    {
        const std::lock_guard lock(shared_->mutex);
        std::erase_if(requests,
                      [this](const Request& request) { return shared_->hasBegun(request); });
        shared_->requests = std::move(requests);
        startWorkers();
        stuck = shared_->stuck();
    }
    showGenericIcons(stuck);
}

const QImage* IconLoader::find(const std::string& path) const {
    const auto known = icons_.find(path);
    return known != icons_.end() ? &known->second.image : nullptr;
}

void IconLoader::refresh() {
    ++generation_;
    shared_->source->refresh();
    want(std::exchange(wanted_, {}), scale_);
}

// Starts the workers that the requests need, and looks after them. To be called with the mutex
// locked.
void IconLoader::startWorkers() {
    if (shared_->requests.empty()) {
        return;
    }
    const unsigned late = shared_->lateWorkers();
    while (late < kMostLate && shared_->workers - late < kMostWorkers) {
        ++shared_->workers;
        // Not joined: the thread may still wait for a disk when the program ends.
        std::thread([shared = shared_] { work(shared); }).detach();
    }
    shared_->changed.notify_all();
    if (shared_->workers > late) {
        watchWorkers();
    }
}

void IconLoader::work(const std::shared_ptr<Shared>& shared) {
    std::unique_lock lock(shared->mutex);
    const auto needed = [&] { return shared->ended || !shared->requests.empty(); };
    // A late worker has been replaced. Once it has its icon after all there is one worker too many,
    // and one ends.
    while (shared->workers - shared->lateWorkers() <= kMostWorkers) {
        if (!shared->changed.wait_for(lock, kIdleTime, needed)) {
            if (shared->workers - shared->lateWorkers() > 1) {
                break;
            }
            lock.unlock();
            shared->source->rest();
            lock.lock();
            if (!needed()) {
                break;
            }
        }
        if (shared->ended) {
            break;
        }
        const auto work =
            shared->underWay.insert(shared->underWay.end(), {std::move(shared->requests.front())});
        shared->requests.pop_front();
        const Request request = work->request;
        lock.unlock();
        const IconImage icon =
            shared->source->icon(request.path, metrics::kIconSide, request.scale);
        lock.lock();
        if (shared->ended) {
            break;  // Qt may be ending, too
        }
        lock.unlock();
        QImage image = withShadow(toImage(icon), request.scale);
        lock.lock();
        shared->underWay.erase(work);
        shared->answers.push_back({request, std::move(image)});
        if (shared->answers.size() == 1 && !shared->ended) {
            shared->answered();
        }
    }
    --shared->workers;
    shared->changed.notify_all();
}

void IconLoader::takeAnswers() {
    std::vector<Answer> answers;
    {
        const std::lock_guard lock(shared_->mutex);
        answers.swap(shared_->answers);
    }
    bool outdated = false;
    for (Answer& answer : answers) {
        outdated |= answer.request.generation != generation_ || answer.request.scale != scale_;
        keep(std::move(answer));
    }
    // A late answer has kept a newer request for the same icon from being made.
    if (outdated) {
        want(std::exchange(wanted_, {}), scale_);
    }
}

void IconLoader::keep(Answer answer) {
    const auto known = icons_.find(answer.request.path);
    // An icon for an earlier scale is of use only while there is no icon at all.
    if (known != icons_.end() &&
        (answer.request.scale != scale_ || answer.request.generation < known->second.generation)) {
        return;
    }
    icons_[answer.request.path] = {std::move(answer.image), answer.request.scale,
                                   answer.request.generation};
    dropSurplus();
    loaded.emit(answer.request.path);
}

// While workers have something to do, looks every 300 ms whether one of them is late.
void IconLoader::watchWorkers() {
    if (std::exchange(watching_, true)) {
        return;
    }
    poster_.postAfter(kBetweenLooks, [this] {
        watching_ = false;
        replaceLateWorkers();
    });
}

void IconLoader::replaceLateWorkers() {
    std::vector<Request> stuck;
    {
        const std::lock_guard lock(shared_->mutex);
        for (Shared::Work& work : shared_->underWay) {
            ++work.looks;
        }
        startWorkers();
        if (shared_->underWay.size() > shared_->lateWorkers()) {
            watchWorkers();
        }
        stuck = shared_->stuck();
    }
    showGenericIcons(stuck);
}

// For what is wanted and has no icon yet.
void IconLoader::showGenericIcons(const std::vector<Request>& requests) {
    for (const Request& request : requests) {
        if (!icons_.contains(request.path) &&
            std::ranges::find(wanted_, request.path) != wanted_.end()) {
            const IconImage icon = shared_->source->genericIcon(metrics::kIconSide, scale_);
            keep({{request.path, scale_, generation_}, withShadow(toImage(icon), scale_)});
        }
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
