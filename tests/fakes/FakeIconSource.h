// An icon source for tests: every path has a colour of its own, and answers may be held back.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/IconSource.h"

namespace tavo {

// May be used on any thread, as an IconSource may. A test that holds answers back releases them
// before it destroys this.
class FakeIconSource final : public IconSource {
public:
    struct Request {
        std::string path;
        int size = 0;
        double scale = 0;

        bool operator==(const Request&) const = default;
    };

    static constexpr std::uint32_t kGeneric = 0xff808080U;

    // The colour of every pixel of the icon of `path`: opaque, and never the generic grey.
    static std::uint32_t colourOf(const std::string& path) {
        const auto hash = static_cast<std::uint32_t>(std::hash<std::string>()(path));
        const std::uint32_t colour = 0xff000000U | hash;
        return colour == kGeneric ? 0xff000000U : colour;
    }

    IconImage icon(const std::string& path, int size, double scale) override {
        std::unique_lock lock(mutex_);
        requests_.push_back({path, size, scale});
        changed_.notify_all();
        changed_.wait(lock,
                      [&] { return (!held_ || released_ > 0) && !heldPaths_.contains(path); });
        if (held_) {
            --released_;
        }
        const std::uint32_t colour =
            iconless_.contains(path) ? kGeneric : colourOf(path) + changes_;
        return square(size, scale, colour);
    }

    IconImage genericIcon(int size, double scale) override { return square(size, scale, kGeneric); }

    // From now on every icon has another colour: colourOf() plus the number of changes.
    void change() {
        const std::lock_guard lock(mutex_);
        ++changes_;
    }

    void rest() override {
        const std::lock_guard lock(mutex_);
        ++rests_;
        changed_.notify_all();
    }

    // Waits until rest() was called; false when it was not within ten seconds.
    [[nodiscard]] bool awaitRest() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10), [&] { return rests_ > 0; });
    }

    void refresh() override {
        const std::lock_guard lock(mutex_);
        ++refreshes_;
    }

    [[nodiscard]] int refreshes() const {
        const std::lock_guard lock(mutex_);
        return refreshes_;
    }

    void haveNoIcon(const std::string& path) {
        const std::lock_guard lock(mutex_);
        iconless_.insert(path);
    }

    // From now on a request waits until release() lets it go.
    void hold() {
        const std::lock_guard lock(mutex_);
        held_ = true;
        released_ = 0;
    }

    // From now on a request for the icon of `path` waits until releaseAll() is called.
    void holdPath(const std::string& path) {
        const std::lock_guard lock(mutex_);
        heldPaths_.insert(path);
    }

    // Lets `count` held requests be answered: those that wait, then later ones.
    void release(int count) {
        const std::lock_guard lock(mutex_);
        released_ += count;
        changed_.notify_all();
    }

    // Ends what hold() began: all requests are answered, waiting and later ones.
    void releaseAll() {
        const std::lock_guard lock(mutex_);
        held_ = false;
        heldPaths_.clear();
        changed_.notify_all();
    }

    // Every request so far, answered or not, in the order in which they came.
    [[nodiscard]] std::vector<Request> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

    // Waits until `count` requests have come in all; false when they did not within ten seconds.
    [[nodiscard]] bool awaitRequests(std::size_t count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return requests_.size() >= count; });
    }

private:
    static IconImage square(int size, double scale, std::uint32_t colour) {
        const double rounded = std::round(size * scale);
        const int side = rounded >= 1 ? static_cast<int>(std::min(rounded, 2048.0)) : 1;
        const auto count = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
        return {side, std::vector<std::uint32_t>(count, colour)};
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Request> requests_;
    std::set<std::string> iconless_;
    std::set<std::string> heldPaths_;
    bool held_ = false;
    int refreshes_ = 0;
    int rests_ = 0;
    std::uint32_t changes_ = 0;
    int released_ = 0;
};

}  // namespace tavo
