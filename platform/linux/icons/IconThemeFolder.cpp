#include "platform/linux/icons/IconThemeFolder.h"

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/system/FileStamp.h"
#include "platform/linux/system/StableHash.h"

namespace tavo {
namespace {

using Format = IconThemeFolder::Format;

constexpr std::array<std::pair<std::string_view, Format>, 4> kEndings = {{
    {".png", Format::Png},
    {".svg", Format::Svg},
    {".svgz", Format::Svgz},
    {".xpm", Format::Xpm},
}};

constexpr char kCacheName[] = "icon-theme.cache";

struct ClosedFolder {
    void operator()(DIR* stream) const { ::closedir(stream); }
};
using FolderStream = std::unique_ptr<DIR, ClosedFolder>;

// The names in the folder at `path`. Most of the hundreds of subfolders in a theme's index do not
// exist; these names rule them out without a system call for each.
std::set<std::string, std::less<>> entriesOf(const std::string& path) {
    std::set<std::string, std::less<>> names;
    if (const FolderStream stream{::opendir(path.c_str())}) {
        while (const dirent* const entry = ::readdir(stream.get())) {
            names.emplace(entry->d_name);
        }
    }
    return names;
}

}  // namespace

std::optional<Format> pictureFormat(std::string_view fileName, std::string_view& stem) {
    for (const auto& [ending, format] : kEndings) {
        if (fileName.size() > ending.size() && fileName.ends_with(ending)) {
            stem = fileName.substr(0, fileName.size() - ending.size());
            return format;
        }
    }
    return std::nullopt;
}

std::optional<IconThemeFolder> IconThemeFolder::open(const std::string& path,
                                                     const std::vector<IconSubfolder>& subfolders) {
    const FileDescriptor folder(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.valid()) {
        return std::nullopt;
    }
    IconThemeFolder opened;
    opened.path_ = path;
    std::int64_t newest = fileStamp(path).modified;
    StableHash fingerprint;
    fingerprint.add(path);
    fingerprint.add(static_cast<std::uint64_t>(newest));
    const auto entries = entriesOf(path);
    for (const IconSubfolder& subfolder : subfolders) {
        const std::string_view name = subfolder.path;
        if (!entries.contains(name.substr(0, name.find('/')))) {
            continue;
        }
        const FileStamp stamp = fileStamp(folder.get(), subfolder.path.c_str());
        if (stamp.exists()) {
            opened.present_.push_back(&subfolder);
            fingerprint.add(name);
            fingerprint.add(static_cast<std::uint64_t>(stamp.modified));
            newest = std::max(newest, stamp.modified);
        }
    }
    // The index must be as new as every subfolder. GTK compares it with the theme's folder alone,
    // and so misses a file that was copied into a subfolder by hand.
    const FileStamp cache = fileStamp(folder.get(), kCacheName);
    opened.hasCache_ = cache.exists() && cache.modified >= newest;
    fingerprint.add(static_cast<std::uint64_t>(cache.modified));
    opened.fingerprint_ = fingerprint.value();
    return opened;
}

void IconThemeFolder::readContents() const {
    if (hasCache_) {
        contents_->cache = GtkIconCache::open(path_ + "/" + kCacheName);
    }
    if (!contents_->cache) {
        for (const IconSubfolder* const subfolder : present_) {
            list(*subfolder);
        }
        return;
    }
    std::unordered_map<std::string_view, const IconSubfolder*> byPath;
    for (const IconSubfolder* const subfolder : present_) {
        byPath.emplace(subfolder->path, subfolder);
    }
    for (const std::string& name : contents_->cache->subfolders()) {
        const auto known = byPath.find(name);
        contents_->cacheSubfolders.push_back(known == byPath.end() ? nullptr : known->second);
    }
}

std::vector<IconThemeFolder::Picture> IconThemeFolder::pictures(std::string_view name) const {
    std::call_once(contents_->made, [this] { readContents(); });
    if (contents_->cache) {
        return cachedPictures(name);
    }
    const auto found = contents_->pictures.find(name);
    return found == contents_->pictures.end() ? std::vector<Picture>() : found->second;
}

void IconThemeFolder::list(const IconSubfolder& subfolder) const {
    const FolderStream stream{::opendir((path_ + "/" + subfolder.path).c_str())};
    if (!stream) {
        return;
    }
    while (const dirent* const entry = ::readdir(stream.get())) {
        std::string_view stem;
        if (const auto format = pictureFormat(entry->d_name, stem)) {
            contents_->pictures[std::string(stem)].push_back({&subfolder, *format});
        }
    }
}

std::vector<IconThemeFolder::Picture> IconThemeFolder::cachedPictures(std::string_view name) const {
    std::vector<Picture> found;
    for (const GtkIconCache::Image& image : contents_->cache->images(name)) {
        const IconSubfolder* const subfolder = contents_->cacheSubfolders[image.subfolder];
        if (subfolder == nullptr) {
            continue;
        }
        for (const auto& [suffix, format] : {std::pair{GtkIconCache::kPng, Format::Png},
                                             std::pair{GtkIconCache::kSvg, Format::Svg},
                                             std::pair{GtkIconCache::kXpm, Format::Xpm}}) {
            if ((image.suffixes & suffix) != 0) {
                found.push_back({subfolder, format});
            }
        }
    }
    return found;
}

std::string IconThemeFolder::file(std::string_view name, const Picture& picture) const {
    std::string file = path_ + "/" + picture.subfolder->path + "/";
    file += name;
    file += kEndings[static_cast<std::size_t>(picture.format)].first;
    return file;
}

}  // namespace tavo
