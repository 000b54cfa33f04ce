// Icons for the tiles in view, made ready off the main thread.
#pragma once

#include <QImage>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "support/Signal.h"

namespace tavo {

class IconSource;
class MainQueue;

// Asks the IconSource on threads of its own, adds the shadow, and keeps what the tiles in view
// and those around them need. Main thread, apart from its workers. An icon that is not there yet
// is simply not found; `loaded` says when it is.
class IconLoader {
public:
    // Both outlive the loader.
    IconLoader(IconSource& source, MainQueue& mainQueue);
    ~IconLoader();
    IconLoader(const IconLoader&) = delete;
    IconLoader& operator=(const IconLoader&) = delete;

    // What is in view now, the most urgent first, at `scale`. Replaces what was asked for before
    // and has not been begun.
    void want(const std::vector<std::string>& paths, double scale);

    // The icon with its shadow: marginPixels(scale) larger than the icon on every side, its device
    // pixel ratio set to its scale. Until it has arrived at the scale last wanted, as it was at
    // another; null when it is not there at all yet.
    [[nodiscard]] const QImage* find(const std::string& path) const;

    // What the shadow needs around the icon: in logical pixels, and in those of a picture.
    static int margin();
    static int marginPixels(double scale);

    // The icons may have changed: each is asked for anew when it is next wanted, and shown as it
    // was until then.
    void refresh();

    // The path whose icon has arrived.
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
    struct Shared;

    void startWorkers();
    void takeAnswers();
    void dropSurplus();

    IconSource& source_;
    MainQueue& mainQueue_;
    std::unordered_map<std::string, Loaded> icons_;
    std::vector<std::string> wanted_;
    double scale_ = 1;  // last wanted
    std::uint64_t generation_ = 0;

    // Between the main thread and the workers, which also ends the answers of a loader that is
    // gone.
    std::shared_ptr<Shared> shared_;
    std::vector<std::thread> workers_;
};

// `icon` with the tile's shadow around it. Any thread.
QImage withShadow(const QImage& icon, double scale);

}  // namespace tavo
