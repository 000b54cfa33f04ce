#include "platform/linux/icons/XdgIconSource.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/entries/DesktopEntry.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/icons/GenericIcon.h"
#include "platform/linux/icons/IconRenderer.h"
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
constexpr std::size_t kMostTries = 4;  // files tried for one icon, when the better ones are broken
constexpr char kGenericName[] = "application-x-executable";

int sideOf(int size, double scale) {
    const double side = std::round(size * scale);
    return side >= 1 ? static_cast<int>(std::min<double>(side, kLargestSide)) : 1;  // 1 for NaN too
}

// Where an application's icon comes from. Nothing of it is looked up yet.
struct Subject {
    enum class Kind : std::uint8_t { None, Themed, File, Bundle };

    Kind kind = Kind::None;
    std::string name;          // of a themed icon; else the path of a file or of a bundle
    std::uint64_t lookup = 0;  // fingerprint of the files that decide, besides the theme
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

// The value of the Icon key, without the blanks around it that some entries have by mistake. ""
// when there is no well-formed entry at `path`.
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

// The files that may show the bundle's icon: the one that the bundle declares, with ".icns"
// appended and as it is written; without one, the first .icns file among its resources.
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
          cache_(environment_.cacheFolder),
          renderer_(environment_.renderer) {}

    IconImage icon(const std::string& path, int size, double scale) override;

    IconImage genericIcon(int size, double scale) override {
        return drawGenericIcon(sideOf(size, scale));
    }

    void rest() override { renderer_.rest(); }

    void refresh() override {
        const std::lock_guard lock(mutex_);
        theme_ = std::make_shared<SessionTheme>(theme_->preferred);
    }

    void preferTheme(const std::string& name) override {
        const std::lock_guard lock(mutex_);
        theme_ = std::make_shared<SessionTheme>(name);
    }

private:
    // The session's theme. The first thread that needs it reads it; the others wait for that one.
    struct SessionTheme {
        explicit SessionTheme(std::string name) : preferred(std::move(name)) {}

        const std::string preferred;  // the settings portal's theme, or ""
        std::once_flag read;
        std::optional<IconTheme> theme;  // immutable once it is read
    };

    std::shared_ptr<const IconTheme> theme() {
        std::shared_ptr<SessionTheme> session;
        {
            const std::lock_guard lock(mutex_);
            session = theme_;
        }
        // Not under the mutex, because this reads folders and may wait for the X server.
        std::call_once(session->read, [&] {
            session->theme.emplace(environment_, sessionIconTheme(environment_, session->preferred),
                                   fallbackIconTheme(environment_));
        });
        return {session, &*session->theme};
    }

    [[nodiscard]] std::vector<std::string> filesFor(const Subject& subject, const IconTheme& theme,
                                                    int side, double scale) const;
    // Sets `final` to false when the renderer failed: the reason may lie outside the file, so the
    // icon must not be kept.
    RenderedIcon render(const std::vector<std::string>& files, const IconTheme& theme, int side,
                        double scale, bool& final);

    const IconEnvironment environment_;
    const BundleIconFile bundleIconFile_;
    RenderedIconCache cache_;
    IconRenderer renderer_;

    std::mutex mutex_;  // guards theme_, but not what it points to
    std::shared_ptr<SessionTheme> theme_ = std::make_shared<SessionTheme>("");
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
    bool final = true;
    if (current && kept->file == (files.empty() ? std::string() : files.front())) {
        rendered = std::move(*kept);  // the theme changed, but not for this icon
    } else {
        rendered = render(files, *theme, side, scale, final);
    }
    if (final) {
        rendered.lookup = lookup;
        cache_.write(key, rendered);
    }
    return std::move(rendered.image);
}

// The files that may show the subject, the best one first; those of the generic icon when the
// subject has none.
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

// Records the best file, even if another one had to stand in for it: once the best one is repaired,
// its new modification time makes the cached icon invalid.
RenderedIcon ThemedIconSource::render(const std::vector<std::string>& files, const IconTheme& theme,
                                      int side, double scale, bool& final) {
    RenderedIcon rendered;
    if (!files.empty()) {
        rendered.file = files.front();
        rendered.stamp = fileStamp(rendered.file);
    }
    const auto generic = theme.files(kGenericName, side, scale);
    for (const auto& list : {files, generic}) {
        for (std::size_t i = 0; i < std::min(list.size(), kMostTries); ++i) {
            IconRenderer::Answer answer = renderer_.draw(list[i], side);
            if (answer.image) {
                rendered.image = std::move(*answer.image);
                return rendered;
            }
            if (answer.failed) {
                final = false;
                break;
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
