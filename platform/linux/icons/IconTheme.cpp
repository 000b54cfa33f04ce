#include "platform/linux/icons/IconTheme.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>
#include <variant>

#include "platform/linux/icons/IconEnvironment.h"
#include "platform/linux/icons/IconThemeFolder.h"
#include "platform/linux/system/FileStamp.h"
#include "platform/linux/system/StableHash.h"
#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

constexpr std::size_t kLargestIndex = std::size_t{4} << 20U;  // bytes
constexpr std::size_t kMostThemes = 32;
constexpr std::string_view kLastTheme = "hicolor";

using Format = IconThemeFolder::Format;

enum class Fit : std::uint8_t { Drawn, Larger, SmallerDrawing, Smaller };

// How well a picture suits the wanted size; the least rank is the best.
using Rank = std::tuple<Fit, int /* pixels off */, bool /* for another scale */, Format>;

Rank rankOf(const IconThemeFolder::Picture& picture, int side, double scale) {
    const IconSubfolder& subfolder = *picture.subfolder;
    const bool drawing = picture.format == Format::Svg || picture.format == Format::Svgz;
    const bool otherScale = subfolder.scale != static_cast<int>(std::ceil(scale));
    int pixels = subfolder.size * subfolder.scale;
    if (drawing && subfolder.scalable) {
        pixels = std::clamp(side, subfolder.least * subfolder.scale,
                            std::max(subfolder.least, subfolder.most) * subfolder.scale);
        if (pixels == side) {
            return {Fit::Drawn, 0, otherScale, picture.format};
        }
    }
    if (pixels >= side) {
        return {Fit::Larger, pixels - side, otherScale, picture.format};
    }
    return {drawing ? Fit::SmallerDrawing : Fit::Smaller, side - pixels, otherScale,
            picture.format};
}

bool isThemeName(const std::string& name) {
    return !name.empty() && name.front() != '.' && name.find('/') == std::string::npos;
}

}  // namespace

struct IconTheme::Theme {
    std::string name;
    IconThemeIndex index;
    std::vector<IconThemeFolder> folders;

    [[nodiscard]] std::vector<std::string> files(std::string_view icon, int side,
                                                 double scale) const {
        struct Candidate {
            Rank rank;
            const IconThemeFolder* folder;
            IconThemeFolder::Picture picture;
        };
        std::vector<Candidate> candidates;
        for (const IconThemeFolder& folder : folders) {
            for (const IconThemeFolder::Picture& picture : folder.pictures(icon)) {
                candidates.push_back({rankOf(picture, side, scale), &folder, picture});
            }
        }
        std::ranges::stable_sort(candidates, {}, &Candidate::rank);
        std::vector<std::string> paths;
        for (const Candidate& candidate : candidates) {
            std::string path = candidate.folder->file(icon, candidate.picture);
            if (fileStamp(path).exists()) {
                paths.push_back(std::move(path));
            }
        }
        return paths;
    }
};

IconTheme::IconTheme(const IconEnvironment& environment, const std::string& name,
                     const std::string& fallback)
    : name_(name) {
    addWithParents(environment, name);
    addWithParents(environment, fallback);
    addTheme(environment, std::string(kLastTheme));

    looseFolders_ = environment.iconFolders;
    looseFolders_.insert(looseFolders_.end(), environment.pixmapFolders.begin(),
                         environment.pixmapFolders.end());
    StableHash fingerprint;
    for (const std::string& folder : looseFolders_) {
        fingerprint.add(static_cast<std::uint64_t>(fileStamp(folder).modified));
    }
    for (const auto& theme : themes_) {
        fingerprint.add(theme->name);
        for (const IconThemeFolder& folder : theme->folders) {
            fingerprint.add(folder.fingerprint());
        }
    }
    fingerprint_ = fingerprint.value();
}

IconTheme::~IconTheme() = default;

bool IconTheme::knows(const std::string& name) const {
    return std::ranges::any_of(themes_, [&](const auto& theme) { return theme->name == name; });
}

// "hicolor" is left out here: it comes after all others, wherever it is inherited.
void IconTheme::addWithParents(const IconEnvironment& environment, const std::string& name) {
    if (name == kLastTheme || !isThemeName(name) || knows(name) || themes_.size() >= kMostThemes) {
        return;
    }
    addTheme(environment, name);
    const std::vector<std::string> parents = themes_.back()->index.inherits;
    for (const std::string& parent : parents) {
        addWithParents(environment, parent);
    }
}

void IconTheme::addTheme(const IconEnvironment& environment, const std::string& name) {
    auto theme = std::make_unique<Theme>();
    theme->name = name;
    bool described = false;
    for (const std::string& folder : environment.iconFolders) {
        const auto bytes = readBoundedFile(folder + "/" + name + "/index.theme", kLargestIndex);
        if (const auto* const text = std::get_if<std::string>(&bytes)) {
            theme->index = parseIconThemeIndex(*text);
            described = true;
            break;
        }
    }
    if (!described && name == kLastTheme) {
        theme->index = plainHicolorIndex();
    }
    for (const std::string& folder : environment.iconFolders) {
        if (auto opened = IconThemeFolder::open(folder + "/" + name, theme->index.subfolders)) {
            theme->folders.push_back(std::move(*opened));
        }
    }
    themes_.push_back(std::move(theme));
}

std::vector<std::string> IconTheme::files(std::string_view name, int side, double scale) const {
    if (name.empty() || name.find('/') != std::string_view::npos ||
        name.find('\0') != std::string_view::npos) {
        return {};
    }
    std::string_view stem = name;
    (void)pictureFormat(name, stem);
    for (const auto& theme : themes_) {
        std::vector<std::string> paths = theme->files(stem, side, scale);
        if (!paths.empty()) {
            return paths;
        }
    }
    return loosePictures(name, stem);
}

std::vector<std::string> IconTheme::loosePictures(std::string_view name,
                                                  std::string_view stem) const {
    std::vector<std::string> paths;
    const auto addIfThere = [&](const std::string& path) {
        if (fileStamp(path).exists()) {
            paths.push_back(path);
        }
    };
    for (const std::string& folder : looseFolders_) {
        const std::string start = folder + "/";
        if (name != stem) {
            addIfThere(start + std::string(name));
        }
        for (const char* const ending : {".svg", ".png", ".xpm"}) {
            if (const std::string file = std::string(stem) + ending; file != name) {
                addIfThere(start + file);
            }
        }
    }
    return paths;
}

}  // namespace tavo
