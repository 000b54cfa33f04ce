// Icons that were rendered before, kept in files under the user's cache folder.
//
// Disposable: whatever is wrong with a file, it counts as not there, and a folder that cannot be
// written is done without. One small file an icon, put in place by renaming, so that several
// processes may share the folder.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/IconSource.h"
#include "platform/linux/system/FileStamp.h"

namespace tavo {

struct RenderedIcon {
    IconImage image;
    std::string file;          // that it was made from; empty when it was made from none
    FileStamp stamp;           // of that file, when it was read
    std::uint64_t lookup = 0;  // fingerprint of all that led to that file
};

// Any thread, several at once.
class RenderedIconCache {
public:
    struct Limits {
        std::size_t files = 4096;
        std::uint64_t bytes = std::uint64_t{128} << 20U;
    };

    // `folder`: "" keeps nothing. It is made by the first write.
    explicit RenderedIconCache(std::string folder)
        : RenderedIconCache(std::move(folder), Limits()) {}
    RenderedIconCache(std::string folder, Limits limits)
        : folder_(std::move(folder)), limits_(limits) {}

    // What was last written under `key`, when it is `side` pixels large. Whether it still holds is
    // the caller's to judge.
    [[nodiscard]] std::optional<RenderedIcon> read(std::string_view key, int side) const;

    // From time to time it also removes the oldest files, when there are more than allowed.
    void write(std::string_view key, const RenderedIcon& icon);

private:
    [[nodiscard]] std::string path(std::string_view key) const;
    void trim();

    std::string folder_;
    Limits limits_;
    std::atomic<unsigned> writes_ = 0;
    std::mutex trimming_;
};

}  // namespace tavo
