// Rendered icons, kept in files under the user's cache folder.
//
// The files are disposable. A file with anything wrong in it counts as missing, and where the
// folder cannot be written nothing is kept. Each icon is one small file, put in place by renaming,
// so that several processes may share the folder.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/IconSource.h"
#include "platform/linux/system/FileStamp.h"

namespace tavo {

struct RenderedIcon {
    IconImage image;
    std::string file;          // path of the file it was made from; empty: drawn without one
    FileStamp stamp;           // of that file, when it was read
    std::uint64_t lookup = 0;  // fingerprint of the folders and files that led to that file
};

// Any thread, several at once.
class RenderedIconCache {
public:
    struct Limits {
        std::size_t files = 4096;
        std::uint64_t bytes = std::uint64_t{128} << 20U;  // of all files together
    };

    // `folder` is made by the first write; with "" nothing is kept.
    explicit RenderedIconCache(std::string folder)
        : RenderedIconCache(std::move(folder), Limits()) {}
    RenderedIconCache(std::string folder, Limits limits)
        : folder_(std::move(folder)), limits_(limits) {}

    // The icon last written under `key`, if it is `side` pixels large. The caller decides whether
    // it is still current.
    [[nodiscard]] std::optional<RenderedIcon> read(std::string_view key, int side) const;

    // Keeps `icon` under `key`. One write in 256 also removes the oldest files, if a limit is
    // exceeded.
    void write(std::string_view key, const RenderedIcon& icon);

private:
    [[nodiscard]] std::string path(std::string_view key) const;
    void trim();

    std::string folder_;
    Limits limits_;
    std::atomic<unsigned> writes_ = 0;
};

}  // namespace tavo
