// Random universally unique identifiers (RFC 4122, version 4).
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace tavo {

struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    // A new random identifier, different from every other. Any thread.
    static Uuid random();

    // The 36-character, upper-case, hyphenated form.
    [[nodiscard]] std::string text() const;

    bool operator==(const Uuid&) const = default;
};

}  // namespace tavo
