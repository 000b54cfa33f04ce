// Pictures drawn in a process of their own: the launcher itself decodes nothing that others made.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/IconSource.h"

namespace tavo {

// Starts the icon renderer when a picture is wanted, one process for each thread that waits for a
// picture, and keeps them for the next ones until rest().
//
// A renderer ends itself where one picture takes longer than a second. A renderer that ends, keeps
// silent or gives an invalid answer is killed and reaped, and one line on standard error tells of
// it; the next picture gets a new renderer. Any thread, several at once.
class IconRenderer {
public:
    // `program`: the path of the icon renderer.
    explicit IconRenderer(std::string program);
    ~IconRenderer();
    IconRenderer(const IconRenderer&) = delete;
    IconRenderer& operator=(const IconRenderer&) = delete;

    struct Answer {
        // Absent: the file shows no picture, or the renderer failed.
        std::optional<IconImage> image;
        // The renderer did not answer, which may be for a reason other than the file.
        bool failed = false;
    };

    // The picture in the file at `path`, in a square of `side` pixels, 1 to 2,048. Waits for two
    // seconds at most, or for four when the renderer has just been started.
    Answer draw(const std::string& path, int side);

    // Ends the renderers that draw nothing at the moment.
    void rest();

private:
    class Process;

    std::optional<Process> take();

    const std::string program_;
    std::mutex mutex_;
    std::vector<Process> idle_;
    bool missing_ = false;  // the program could not be started; a line on standard error said so
};

}  // namespace tavo
