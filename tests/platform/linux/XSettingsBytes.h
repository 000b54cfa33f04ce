// Writes the property that an XSETTINGS manager publishes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

namespace tavo {

class XSettingsBytes {
public:
    explicit XSettingsBytes(bool bigEndian) : bigEndian_(bigEndian) {}

    XSettingsBytes& addInteger(const std::string& name, std::uint32_t value) {
        addHead(0, name);
        settings_ += number(value, 4);
        return *this;
    }

    XSettingsBytes& addColor(const std::string& name) {
        addHead(2, name);
        settings_ += std::string(8, 'c');
        return *this;
    }

    XSettingsBytes& addString(const std::string& name, const std::string& value) {
        addHead(1, name);
        settings_ += number(static_cast<std::uint32_t>(value.size()), 4) + padded(value);
        return *this;
    }

    [[nodiscard]] std::string property() const {
        return std::string(1, bigEndian_ ? '\1' : '\0') + std::string(3, '\0') + number(5, 4) +
               number(count_, 4) + settings_;
    }

private:
    void addHead(std::uint32_t type, const std::string& name) {
        ++count_;
        settings_ += number(type, 1) + std::string(1, '\0') +
                     number(static_cast<std::uint32_t>(name.size()), 2) + padded(name) +
                     number(3, 4);
    }

    [[nodiscard]] std::string number(std::uint32_t value, int size) const {
        std::string bytes;
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>(value >> (8 * i));
        }
        if (bigEndian_) {
            std::ranges::reverse(bytes);
        }
        return bytes;
    }

    static std::string padded(const std::string& text) {
        return text + std::string((4 - text.size() % 4) % 4, '\0');
    }

    bool bigEndian_;
    std::uint32_t count_ = 0;
    std::string settings_;
};

}  // namespace tavo
