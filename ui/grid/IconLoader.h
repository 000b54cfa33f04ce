// Loads the icons of the tiles in view on other threads.
#pragma once

#include <QImage>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/MainThreadPoster.h"
#include "support/Signal.h"

namespace tavo {

class IconSource;

// Asks an IconSource for icons on worker threads, adds the shadow, and keeps the icons of the tiles
// in view and of those around them. Main thread, apart from its workers.
//
// An icon that takes longer than a second is shown as the generic one until it comes, and another
// worker goes on with the other icons: a disk that does not answer costs only the icons on it.
// Workers end after five seconds without work; the last of them calls IconSource::rest().
class IconLoader {
public:
    // `mainQueue` outlives the loader. The source may outlive both: a worker that waits for a disk
    // holds on to it.
    IconLoader(std::shared_ptr<IconSource> source, MainQueue& mainQueue);
    // Waits 0.2 seconds at most for the icons that the workers have begun.
    ~IconLoader();
    IconLoader(const IconLoader&) = delete;
    IconLoader& operator=(const IconLoader&) = delete;

    // Loads the icons of `paths` for a device pixel ratio of `scale`, in this order. Replaces
    // earlier requests, except those that a worker has begun.
    void want(const std::vector<std::string>& paths, double scale);

    // The icon with its shadow (IconShadow.h); its device pixel ratio is its scale. After a change
    // of scale the icon of the old scale, until the new one is loaded. Null if there is none yet.
    [[nodiscard]] const QImage* find(const std::string& path) const;

    // To be called when icons may have changed. Wanted icons are loaded again at once, others when
    // want() next names them. Until then find() returns the old ones.
    void refresh();

    // Emitted with the path whose icon has been loaded.
    Signal<const std::string&> loaded;

private:
    struct Request {
        std::string path;
        double scale = 1;
        std::uint64_t generation = 0;

        bool operator==(const Request&) const = default;
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
    struct Shared;

    void startWorkers();
    static void work(const std::shared_ptr<Shared>& shared);
    void takeAnswers();
    void watchWorkers();
    void replaceLateWorkers();
    void keep(Answer answer);
    void showGenericIcons(const std::vector<Request>& requests);
    void dropSurplus();

    MainThreadPoster poster_;
    std::unordered_map<std::string, Loaded> icons_;
    std::vector<std::string> wanted_;
    double scale_ = 1;  // the scale of the last want()
    std::uint64_t generation_ = 0;
    bool watching_ = false;
    std::shared_ptr<Shared> shared_;  // shared with the workers
};

}  // namespace tavo
