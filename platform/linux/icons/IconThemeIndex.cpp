#include "platform/linux/icons/IconThemeIndex.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>

#include "platform/linux/entries/KeyFile.h"
#include "platform/posix/RelativePath.h"

namespace tavo {
namespace {

constexpr std::size_t kMostSubfolders = 4096;
constexpr std::size_t kMostParents = 64;

std::vector<std::string_view> split(std::string_view list) {
    std::vector<std::string_view> parts;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        std::string_view part = list.substr(0, comma);
        while (part.starts_with(' ')) {
            part.remove_prefix(1);
        }
        while (part.ends_with(' ')) {
            part.remove_suffix(1);
        }
        if (!part.empty()) {
            parts.push_back(part);
        }
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return parts;
}

// The size that `text` states; 0 when it is no sensible one.
int sizeFrom(std::string_view text) {
    constexpr int kLargest = 65536;
    int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
    return whole && number > 0 && number <= kLargest ? number : 0;
}

struct Section {
    int size = 0;
    int scale = 1;
    int least = 0;
    int most = 0;
    bool scalable = false;

    void take(std::string_view key, std::string_view value) {
        if (key == "Size") {
            size = sizeFrom(value);
        } else if (key == "Scale") {
            scale = std::max(sizeFrom(value), 1);
        } else if (key == "MinSize") {
            least = sizeFrom(value);
        } else if (key == "MaxSize") {
            most = sizeFrom(value);
        } else if (key == "Type") {
            scalable = value == "Scalable";
        }
    }

    [[nodiscard]] IconSubfolder named(std::string_view path) const {
        return {std::string(path),
                size,
                scale,
                scalable && least > 0 ? least : size,
                scalable && most > 0 ? most : size,
                scalable};
    }
};

}  // namespace

IconThemeIndex parseIconThemeIndex(std::string_view text) {
    IconThemeIndex index;
    std::vector<std::string_view> paths;
    std::unordered_map<std::string_view, Section> sections;
    std::string_view group;
    Section* section = nullptr;  // of `group`; saves a look-up for each of its lines
    for (KeyFileLines lines(text); lines.next();) {
        if (lines.group() != "Icon Theme") {
            if (section == nullptr || lines.group() != group) {
                group = lines.group();
                section = &sections[group];
            }
            section->take(lines.key(), lines.value());
        } else if (lines.key() == "Directories" || lines.key() == "ScaledDirectories") {
            const auto more = split(lines.value());
            paths.insert(paths.end(), more.begin(), more.end());
        } else if (lines.key() == "Inherits") {
            const auto names = split(lines.value());
            index.inherits.assign(
                names.begin(),
                names.begin() + static_cast<std::ptrdiff_t>(std::min(names.size(), kMostParents)));
        }
    }
    for (const std::string_view path : paths) {
        const auto described = sections.find(path);
        if (described == sections.end() || described->second.size == 0 ||
            !staysInside(path.substr(0, path.find_last_not_of('/') + 1))) {
            continue;
        }
        if (index.subfolders.size() == kMostSubfolders) {
            break;
        }
        index.subfolders.push_back(described->second.named(path));
        sections.erase(described);  // each folder once, however often it is listed
    }
    return index;
}

IconThemeIndex plainHicolorIndex() {
    IconThemeIndex index;
    for (const int size : {16, 22, 24, 32, 36, 48, 64, 72, 96, 128, 192, 256, 512}) {
        const std::string side = std::to_string(size);
        index.subfolders.push_back({side + "x" + side + "/apps", size, 1, size, size, false});
    }
    index.subfolders.push_back({"scalable/apps", 128, 1, 1, 512, true});
    return index;
}

}  // namespace tavo
