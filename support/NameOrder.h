// The order of names in one language: numbers by their value, case and accents only where nothing
// else differs, punctuation and spaces never ignored (the Unicode Collation Algorithm, as ICU
// tailors it for the language). For the inside of this folder; any thread.
#pragma once

#include <cstddef>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct UCollator;

namespace tavo {

class NameOrder {
public:
    // An ICU locale. One that ICU does not know has the order of no language in particular.
    explicit NameOrder(std::string locale) : locale_(std::move(locale)) {}
    ~NameOrder();
    NameOrder(const NameOrder&) = delete;
    NameOrder& operator=(const NameOrder&) = delete;

    // As TextRules::compare() and TextRules::sortedOrder().
    [[nodiscard]] int compare(std::string_view a, std::string_view b) const;
    [[nodiscard]] std::vector<std::size_t> sortedOrder(
        std::span<const std::string_view> names) const;

private:
    // Opened when it is first needed: many users of TextRules never order anything. Null when ICU
    // has no data at all; names are in the order of their length then.
    [[nodiscard]] const UCollator* collator() const;

    std::string locale_;
    mutable std::once_flag opened_;
    mutable UCollator* collator_ = nullptr;
};

}  // namespace tavo
