// Icons of made-up applications.
#pragma once

#include <QColor>
#include <map>
#include <string>
#include <vector>

#include "platform/IconSource.h"

namespace tavo {

// Rounded squares with a gradient and the first letter of the name, in one of ten colours. All are
// drawn in the constructor, so that icon() uses no Qt and may be called on any thread.
class DrawnIcons final : public IconSource {
public:
    struct Application {
        std::string path;
        std::string name;
    };

    // Draws the icons for tiles at `scale`. For other sizes and scales icon() returns a grey
    // square.
    DrawnIcons(const std::vector<Application>& applications, double scale);

    IconImage icon(const std::string& path, int size, double scale) override;
    IconImage genericIcon(int size, double scale) override;
    void refresh() override {}
    void rest() override {}

    // The colour at that point of the icon of `path`. In logical pixels.
    [[nodiscard]] QColor colorAt(const std::string& path, int x, int y) const;

private:
    double scale_;
    std::map<std::string, IconImage> icons_;
};

}  // namespace tavo
