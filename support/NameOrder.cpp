#include "support/NameOrder.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include "support/Utf8.h"

namespace tavo {
namespace {

void toUtf16(std::string_view text, std::u16string& units) {
    // No text has more units in UTF-16 than it has bytes in UTF-8.
    units.resize(text.size());
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(units.data(), static_cast<int32_t>(units.size()), &length, text.data(),
                         static_cast<int32_t>(text.size()), static_cast<UChar32>(kReplacement),
                         nullptr, &status);
    units.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
}

std::u16string utf16(std::string_view text) {
    std::u16string units;
    toUtf16(text, units);
    return units;
}

// In the composed form, in which both spellings of a letter are as long as each other.
std::size_t composedLength(const std::u16string& units) {
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* const composer = unorm2_getNFCInstance(&status);
    const int32_t length = unorm2_normalize(
        composer, units.data(), static_cast<int32_t>(units.size()), nullptr, 0, &status);
    return static_cast<std::size_t>(length);
}

// The order of names that the language finds equal.
int compareUnits(const std::u16string& a, const std::u16string& b) {
    const std::size_t lengthOfA = composedLength(a);
    const std::size_t lengthOfB = composedLength(b);
    if (lengthOfA != lengthOfB) {
        return lengthOfA < lengthOfB ? -1 : 1;
    }
    return a.compare(b);
}

// Sort keys one behind another: memory for thousands of them is asked for a few times only.
class SortKeys {
public:
    void append(const UCollator* collator, const std::u16string& name) {
        if (collator == nullptr) {
            begins_.push_back(end_);
            return;
        }
        constexpr std::size_t kUsualLength = 128;
        std::size_t room = kUsualLength;
        for (;;) {
            bytes_.resize(end_ + room);
            const auto length = static_cast<std::size_t>(
                ucol_getSortKey(collator, name.data(), static_cast<int32_t>(name.size()),
                                bytes_.data() + end_, static_cast<int32_t>(room)));
            if (length <= room) {
                begins_.push_back(end_);
                end_ += length;
                return;
            }
            room = length;
        }
    }

    [[nodiscard]] std::string_view operator[](std::size_t index) const {
        const std::size_t end = index + 1 < begins_.size() ? begins_[index + 1] : end_;
        return {reinterpret_cast<const char*>(bytes_.data()) + begins_[index],
                end - begins_[index]};
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::vector<std::size_t> begins_;
    std::size_t end_ = 0;
};

// The first bytes of a key as a number in the same order.
std::uint64_t prefix(std::string_view key) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        number = (number << 8) | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
    }
    return number;
}

UCollator* openCollator(const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    UCollator* collator = ucol_open(locale, &status);
    ucol_setAttribute(collator, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
    ucol_setAttribute(collator, UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &status);
    ucol_setAttribute(collator, UCOL_STRENGTH, UCOL_TERTIARY, &status);
    ucol_setAttribute(collator, UCOL_CASE_LEVEL, UCOL_ON, &status);
    ucol_setAttribute(collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    ucol_setAttribute(collator, UCOL_CASE_FIRST, UCOL_OFF, &status);
    if (U_FAILURE(status)) {
        ucol_close(collator);
        return nullptr;
    }
    return collator;
}

}  // namespace

NameOrder::~NameOrder() {
    ucol_close(collator_);
}

const UCollator* NameOrder::collator() const {
    std::call_once(opened_, [this] {
        collator_ = openCollator(locale_.c_str());
        if (collator_ == nullptr) {
            collator_ = openCollator("");
        }
    });
    return collator_;
}

int NameOrder::compare(std::string_view a, std::string_view b) const {
    if (a == b) {
        return 0;
    }
    const auto unitsOfA = utf16(a);
    const auto unitsOfB = utf16(b);
    if (const UCollator* const order = collator()) {
        const UCollationResult result =
            ucol_strcoll(order, unitsOfA.data(), static_cast<int32_t>(unitsOfA.size()),
                         unitsOfB.data(), static_cast<int32_t>(unitsOfB.size()));
        if (result != UCOL_EQUAL) {
            return result == UCOL_LESS ? -1 : 1;
        }
    }
    return compareUnits(unitsOfA, unitsOfB);
}

std::vector<std::size_t> NameOrder::sortedOrder(std::span<const std::string_view> names) const {
    struct Entry {
        std::uint64_t prefix;
        std::size_t index;
    };
    SortKeys keys;
    std::vector<Entry> entries;
    entries.reserve(names.size());
    std::u16string units;
    const UCollator* const order = collator();
    for (std::size_t i = 0; i < names.size(); ++i) {
        toUtf16(names[i], units);
        keys.append(order, units);
        entries.push_back({prefix(keys[i]), i});
    }
    std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
        if (a.prefix != b.prefix) {
            return a.prefix < b.prefix;
        }
        if (const int byKey = keys[a.index].compare(keys[b.index]); byKey != 0) {
            return byKey < 0;
        }
        if (names[a.index] != names[b.index]) {
            const int byUnits = compareUnits(utf16(names[a.index]), utf16(names[b.index]));
            if (byUnits != 0) {
                return byUnits < 0;
            }
        }
        return a.index < b.index;
    });
    std::vector<std::size_t> positions;
    positions.reserve(entries.size());
    for (const Entry& entry : entries) {
        positions.push_back(entry.index);
    }
    return positions;
}

}  // namespace tavo
