// Icons of made-up applications, always the same.
#pragma once

#include <QColor>
#include <map>
#include <string>
#include <vector>

#include "platform/IconSource.h"

namespace tavo {

// A rounded square with a gradient and the first letter of the name, each in one of ten colours.
// All are drawn when it is made, so that answering needs no toolkit.
class DrawnIcons final : public IconSource {
public:
    struct Application {
        std::string path;
        std::string name;
    };

    // Drawn for tiles at `scale`; asked for anything else it answers with a grey square.
    DrawnIcons(const std::vector<Application>& applications, double scale);

    IconImage icon(const std::string& path, int size, double scale) override;
    void refresh() override {}

    // The colour of the icon of `path` at a point in logical pixels.
    [[nodiscard]] QColor colorAt(const std::string& path, int x, int y) const;

private:
    double scale_;
    std::map<std::string, IconImage> icons_;
};

}  // namespace tavo
