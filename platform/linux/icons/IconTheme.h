// Finds the picture files of an icon by its name (Icon Theme Specification 0.13, freedesktop.org).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

struct IconEnvironment;

// Searches an icon theme and all that it inherits, then a fallback theme and all that this
// inherits, then "hicolor", then the single pictures in the icon and pixmap folders. The
// constructor reads the index.theme files and the modification times of the folders; a folder's
// contents are read once, at the first look-up that needs them.
//
// Shows the folders as they were when it was made: to see changes, make a new one and compare the
// fingerprints. Immutable; any thread.
class IconTheme {
public:
    // The theme `name` and the fallback theme `fallback`. A theme that is inherited several times
    // counts once, one that is not installed is passed over.
    IconTheme(const IconEnvironment& environment, const std::string& name,
              const std::string& fallback);
    ~IconTheme();

    [[nodiscard]] const std::string& name() const { return name_; }

    // A hash that is the same in every process, until a file is added to or removed from one of the
    // folders.
    [[nodiscard]] std::uint64_t fingerprint() const { return fingerprint_; }

    // Existing files for the icon `name` in the first theme that has any, the best one first, to
    // be shown `side` pixels large at `scale`. Scalable files for that size come first, then larger
    // pictures, the smallest first, then smaller ones, the largest first. "NAME-symbolic" does not
    // count as `name`. The name may end in ".png", ".svg", ".svgz" or ".xpm"; a name with a "/" has
    // no files.
    [[nodiscard]] std::vector<std::string> files(std::string_view name, int side,
                                                 double scale) const;

private:
    struct Theme;

    void addWithParents(const IconEnvironment& environment, const std::string& name);
    void addTheme(const IconEnvironment& environment, const std::string& name);
    [[nodiscard]] bool knows(const std::string& name) const;
    [[nodiscard]] std::vector<std::string> loosePictures(std::string_view name,
                                                         std::string_view stem) const;

    std::string name_;
    std::uint64_t fingerprint_ = 0;
    std::vector<std::unique_ptr<Theme>> themes_;
    std::vector<std::string> looseFolders_;
};

}  // namespace tavo
