// Finds the picture files of an icon by its name (Icon Theme Specification 0.13, freedesktop.org).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

struct IconEnvironment;

// A theme with all that it inherits, then the theme that stands in for what both lack, then
// "hicolor", then loose pictures. Made by reading the index.theme files and looking at the dates
// of the folders; the folders' contents are read when they are first needed, each at most once.
//
// Shows the folders as they were when it was made: whoever wants to see changes makes a new one
// and compares the fingerprints. Safe from several threads.
class IconTheme {
public:
    // Of themes that inherit each other in a circle each counts once. Names that are not
    // installed are passed over.
    IconTheme(const IconEnvironment& environment, const std::string& name,
              const std::string& fallback);
    ~IconTheme();

    [[nodiscard]] const std::string& name() const { return name_; }

    // Differs from that of another run when a file has come or gone in any folder concerned.
    [[nodiscard]] std::uint64_t fingerprint() const { return fingerprint_; }

    // Existing files for the icon `name` in the first theme that has any, the best one first, to
    // be shown `side` pixels large at `scale`: what can be drawn at that size, then what is
    // larger, the smallest first, then what is smaller, the largest first. A drawing is never
    // simplified to its "-symbolic" sibling. The name may end in ".png", ".svg", ".svgz" or
    // ".xpm"; one with a "/" has no files.
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
