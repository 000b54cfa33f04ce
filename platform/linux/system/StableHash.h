// A 64-bit hash that is the same in every run, to notice that facts have changed since they were
// stored. Not cryptographic.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace tavo {

// The same facts added in the same order give the same value on one machine.
class StableHash {
public:
    void add(std::uint64_t number) {
        value_ = (value_ ^ number) * 0x9e3779b97f4a7c15U;
        value_ ^= value_ >> 32U;
    }

    // Adds the length too: "ab", "c" must differ from "a", "bc".
    void add(std::string_view text) {
        add(text.size());
        while (!text.empty()) {
            const std::size_t count = text.size() < 8 ? text.size() : 8;
            std::uint64_t word = 0;
            std::memcpy(&word, text.data(), count);
            add(word);
            text.remove_prefix(count);
        }
    }

    [[nodiscard]] std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 0x243f6a8885a308d3U;
};

}  // namespace tavo
