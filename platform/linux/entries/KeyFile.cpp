#include "platform/linux/entries/KeyFile.h"

#include <algorithm>

#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

std::string_view stripped(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

// Removes a flag of KDE's: "Theme[$i]" becomes "Theme". A locale stays: "Name[it]".
std::string_view withoutFlag(std::string_view key) {
    return key.substr(0, key.find("[$"));
}

}  // namespace

bool KeyFileLines::next() {
    while (!rest_.empty()) {
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        const std::string_view line = stripped(rest_.substr(0, end));
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        if (line.empty() || line.front() == '#' || line.front() == ';') {
            continue;
        }
        if (line.front() == '[') {
            group_ = line.substr(1, std::min(line.find(']'), line.size()) - 1);
            continue;
        }
        if (const std::size_t equals = line.find('='); equals != std::string_view::npos) {
            key_ = stripped(line.substr(0, equals));
            value_ = stripped(line.substr(equals + 1));
            return true;
        }
    }
    return false;
}

std::optional<std::string> keyFileValue(const std::string& path, std::string_view group,
                                        std::string_view key) {
    const auto bytes = readBoundedFile(path, kLargestKeyFile);
    const auto* const text = std::get_if<std::string>(&bytes);
    if (text == nullptr) {
        return std::nullopt;
    }
    std::optional<std::string> found;
    for (KeyFileLines lines(*text); lines.next();) {
        if (lines.group() == group && withoutFlag(lines.key()) == key) {
            found = std::string(lines.value());
        }
    }
    return found;
}

}  // namespace tavo
