#include "platform/linux/icons/XdgIconSource.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/entries/DesktopEntry.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/icons/IconFile.h"
#include "platform/linux/icons/IconTheme.h"
#include "platform/linux/icons/IconThemeName.h"
#include "platform/linux/icons/RenderedIconCache.h"
#include "platform/linux/system/FileStamp.h"
#include "platform/linux/system/StableHash.h"
#include "platform/posix/PosixFileManager.h"
#include "support/Text.h"

namespace tavo {
namespace {

constexpr int kLargestSide = 2048;
constexpr std::size_t kMostTries = 4;  // files of one icon, when the better ones are broken
constexpr char kGenericName[] = "application-x-executable";

int sideOf(int size, double scale) {
    const double side = std::round(size * scale);
    return side >= 1 ? static_cast<int>(std::min<double>(side, kLargestSide)) : 1;  // NaN too
}

// Where an application's picture comes from, before anything is looked for.
struct Subject {
    enum class Kind : std::uint8_t { None, Themed, File, Bundle };

    Kind kind = Kind::None;
    std::string name;          // of an icon, or the path of a file or of a bundle
    std::uint64_t lookup = 0;  // fingerprint of what decides besides the theme
};

std::uint64_t fingerprintOf(const std::vector<std::string>& paths) {
    StableHash fingerprint;
    for (const std::string& path : paths) {
        const FileStamp stamp = fileStamp(path);
        fingerprint.add(static_cast<std::uint64_t>(stamp.modified));
        fingerprint.add(static_cast<std::uint64_t>(stamp.size));
    }
    return fingerprint.value();
}

// Of an entry that is gone or is none, "". Blanks around a name are a slip of its author.
std::string iconOfEntry(const std::string& path, const std::vector<std::string>& languages) {
    const auto entry = readDesktopEntry(path, languages);
    return entry ? std::string(trimmed(entry->icon)) : std::string();
}

Subject subjectOf(const std::string& path, const std::vector<std::string>& languages) {
    if (path.ends_with(".app")) {
        return {Subject::Kind::Bundle, path,
                fingerprintOf({path + "/Contents/Info.plist", path + "/Contents/Resources"})};
    }
    std::string icon = isDesktopFileName(path) ? iconOfEntry(path, languages) : std::string();
    if (icon.starts_with('/')) {
        const std::uint64_t lookup = fingerprintOf({icon});
        return {Subject::Kind::File, std::move(icon), lookup};
    }
    return {icon.empty() ? Subject::Kind::None : Subject::Kind::Themed, std::move(icon), 0};
}

// What a bundle declares, with and without the ending that may be left out; then any icon file.
std::vector<std::string> bundleFiles(const std::string& bundle, const BundleIconFile& iconFile) {
    const std::string folder = bundle + "/Contents/Resources";
    std::vector<std::string> files;
    const auto addIfThere = [&](const std::string& name) {
        if (std::string file = folder + "/" + name; fileStamp(file).exists()) {
            files.push_back(std::move(file));
        }
    };
    const auto declared = iconFile ? iconFile(bundle) : std::nullopt;
    if (declared && !declared->empty() && declared->find('/') == std::string::npos) {
        addIfThere(*declared + ".icns");
        addIfThere(*declared);
    }
    if (files.empty()) {
        auto names = makePosixFileManager()->contentsOfDirectory(folder).value_or(
            std::vector<std::string>());
        std::ranges::sort(names);
        const auto icns = std::ranges::find_if(
            names, [](const std::string& name) { return name.ends_with(".icns"); });
        if (icns != names.end()) {
            addIfThere(*icns);
        }
    }
    return files;
}

class ThemedIconSource final : public XdgIconSource {
public:
    ThemedIconSource(IconEnvironment environment, BundleIconFile bundleIconFile)
        : environment_(std::move(environment)),
          bundleIconFile_(std::move(bundleIconFile)),
          cache_(environment_.cacheFolder) {}

    IconImage icon(const std::string& path, int size, double scale) override;

    void refresh() override {
        const std::lock_guard lock(mutex_);
        theme_ = nullptr;
    }

    void preferTheme(const std::string& name) override {
        const std::lock_guard lock(mutex_);
        preferred_ = name;
        theme_ = nullptr;
    }

private:
    // Whoever comes while it is being read waits for it.
    std::shared_ptr<const IconTheme> theme() {
        const std::lock_guard lock(mutex_);
        if (!theme_) {
            theme_ = std::make_shared<const IconTheme>(environment_,
                                                       sessionIconTheme(environment_, preferred_),
                                                       fallbackIconTheme(environment_));
        }
        return theme_;
    }

    [[nodiscard]] std::vector<std::string> filesFor(const Subject& subject, const IconTheme& theme,
                                                    int side, double scale) const;
    [[nodiscard]] RenderedIcon render(const std::vector<std::string>& files, const IconTheme& theme,
                                      int side, double scale) const;

    const IconEnvironment environment_;
    const BundleIconFile bundleIconFile_;
    RenderedIconCache cache_;

    std::mutex mutex_;
    std::string preferred_;
    std::shared_ptr<const IconTheme> theme_;
};

std::string cacheKey(const IconTheme& theme, const Subject& subject, int size, double scale) {
    std::string key = theme.name();
    key += '\0';
    key += subject.name;
    key += '\0';
    key += std::to_string(size) + "@" + std::to_string(scale);
    return key;
}

std::uint64_t lookupOf(const IconTheme& theme, const Subject& subject) {
    StableHash fingerprint;
    fingerprint.add(theme.fingerprint());
    fingerprint.add(subject.lookup);
    return fingerprint.value();
}

IconImage ThemedIconSource::icon(const std::string& path, int size, double scale) {
    const int side = sideOf(size, scale);
    const auto theme = this->theme();
    const Subject subject = subjectOf(path, environment_.languages);
    const std::string key = cacheKey(*theme, subject, size, scale);
    const std::uint64_t lookup = lookupOf(*theme, subject);

    auto kept = cache_.read(key, side);
    const bool current = kept && (kept->file.empty() || fileStamp(kept->file) == kept->stamp);
    if (current && kept->lookup == lookup) {
        return std::move(kept->image);
    }
    const std::vector<std::string> files = filesFor(subject, *theme, side, scale);
    RenderedIcon rendered;
    if (current && kept->file == (files.empty() ? std::string() : files.front())) {
        rendered = std::move(*kept);  // something else came or went
    } else {
        rendered = render(files, *theme, side, scale);
    }
    rendered.lookup = lookup;
    cache_.write(key, rendered);
    return std::move(rendered.image);
}

// Without any file of its own the subject has those of the generic icon.
std::vector<std::string> ThemedIconSource::filesFor(const Subject& subject, const IconTheme& theme,
                                                    int side, double scale) const {
    std::vector<std::string> files;
    switch (subject.kind) {
        case Subject::Kind::Themed:
            files = theme.files(subject.name, side, scale);
            break;
        case Subject::Kind::Bundle:
            files = bundleFiles(subject.name, bundleIconFile_);
            break;
        case Subject::Kind::File:
            if (fileStamp(subject.name).exists()) {
                files = {subject.name};
            }
            break;
        case Subject::Kind::None:
            break;
    }
    return files.empty() ? theme.files(kGenericName, side, scale) : files;
}

// The file that counts is the best one, even if another had to stand in: when that one is
// mended, the icon is made again.
RenderedIcon ThemedIconSource::render(const std::vector<std::string>& files, const IconTheme& theme,
                                      int side, double scale) const {
    RenderedIcon rendered;
    if (!files.empty()) {
        rendered.file = files.front();
        rendered.stamp = fileStamp(rendered.file);
    }
    const auto generic = theme.files(kGenericName, side, scale);
    for (const auto& list : {files, generic}) {
        for (std::size_t i = 0; i < std::min(list.size(), kMostTries); ++i) {
            if (auto image = readIconFile(list[i], side)) {
                rendered.image = std::move(*image);
                return rendered;
            }
        }
    }
    rendered.image = drawGenericIcon(side);
    return rendered;
}

}  // namespace

std::unique_ptr<XdgIconSource> makeXdgIconSource(IconEnvironment environment,
                                                 BundleIconFile bundleIconFile) {
    return std::make_unique<ThemedIconSource>(std::move(environment), std::move(bundleIconFile));
}

}  // namespace tavo
