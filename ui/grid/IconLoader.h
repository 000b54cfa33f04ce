// Loads the icons of the tiles in view on other threads.
#pragma once

#include <QImage>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/MainThreadPoster.h"
#include "support/Signal.h"

namespace tavo {

class IconSource;

// Asks an IconSource for icons on worker threads, adds the shadow, and keeps the icons of the tiles
// in view and of those around them. Main thread, apart from its workers.
class IconLoader {
public:
    // `source` and `mainQueue` outlive the loader.
    IconLoader(IconSource& source, MainQueue& mainQueue);
    ~IconLoader();
    IconLoader(const IconLoader&) = delete;
    IconLoader& operator=(const IconLoader&) = delete;

    // Loads the icons of `paths` for a device pixel ratio of `scale`, in this order. Replaces
    // earlier requests, except those that a worker has begun.
    void want(const std::vector<std::string>& paths, double scale);

    // The icon with its shadow, marginPixels(scale) larger than the icon on every side; its device
    // pixel ratio is its scale. After a change of scale the icon of the old scale, until the new
    // one is loaded. Null if there is none yet.
    [[nodiscard]] const QImage* find(const std::string& path) const;

    // The space for the shadow on each side of an icon: in logical pixels, and in device pixels at
    // `scale`.
    static int margin();
    static int marginPixels(double scale);

    // To be called when icons may have changed. Each icon is loaded again the next time that it is
    // wanted, and the old one is used until then.
    void refresh();

    // Emitted with the path whose icon has been loaded.
    Signal<const std::string&> loaded;

private:
    struct Request {
        std::string path;
        double scale = 1;
        std::uint64_t generation = 0;
    };
    struct Loaded {
        QImage image;
        double scale = 1;
        std::uint64_t generation = 0;
    };
    struct Answer {
        Request request;
        QImage image;
    };

    void startWorkers();
    void takeAnswers();
    void dropSurplus();

    IconSource& source_;
    std::unordered_map<std::string, Loaded> icons_;
    std::vector<std::string> wanted_;
    double scale_ = 1;  // that of the last want()
    std::uint64_t generation_ = 0;

    MainThreadPoster mainThread_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Request> requests_;  // under the mutex
    std::vector<Answer> answers_;   // under the mutex
    bool ended_ = false;            // under the mutex

    std::vector<std::thread> workers_;
};

// `icon` with the shadow of a tile around it. Any thread.
QImage withShadow(const QImage& icon, double scale);

}  // namespace tavo
