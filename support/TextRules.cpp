#include <algorithm>
#include <array>
#include <cstdlib>

#include <unicode/uloc.h>

#include "support/Text.h"
#include "support/TextFolding.h"
#include "support/TextTables.h"
#include "support/Utf8.h"

namespace tavo {
namespace {

constexpr const char* kUsualLocale = "en_US";

std::string language(const std::string& locale) {
    std::array<char, ULOC_LANG_CAPACITY> code{};
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getLanguage(locale.c_str(), code.data(), code.size(), &status);
    return U_SUCCESS(status) ? std::string(code.data(), static_cast<std::size_t>(length)) : "";
}

// ICU's name of a POSIX locale ("sr_RS.UTF-8@latin"); ICU's own names stay what they are.
std::string icuLocale(std::string_view posix) {
    const std::string name(posix);
    const std::string_view territory = posix.substr(0, posix.find_first_of(".@"));
    if (territory.empty() || territory == "C" || territory == "POSIX") {
        return kUsualLocale;
    }
    if (posix.ends_with("@latin")) {
        return language(name) + "_Latn";
    }
    std::array<char, ULOC_FULLNAME_CAPACITY> canonical{};
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length =
        uloc_canonicalize(name.c_str(), canonical.data(), canonical.size(), &status);
    if (U_FAILURE(status) || length <= 0) {
        return kUsualLocale;
    }
    return {canonical.data(), static_cast<std::size_t>(length)};
}

Casing casingOf(const std::string& locale) {
    const std::string code = language(locale);
    return code == "tr" || code == "az" ? Casing::kTurkic : Casing::kGeneral;
}

}  // namespace

TextRules::TextRules(std::string_view locale) {
    const std::string name = icuLocale(locale);
    tables_ = std::make_shared<const Tables>(casingOf(name), name);
}

TextRules TextRules::forUser() {
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            return TextRules(value);
        }
    }
    return TextRules("");
}

bool TextRules::contains(std::string_view text, std::string_view needle) const {
    if (text.empty() || needle.empty()) {
        return false;
    }
    const Casing casing = tables_->casing;
    if (isAscii(text) && isAscii(needle)) {
        return standsInAscii(text, needle, casing);
    }
    return standsIn(folded(text, casing), folded(needle, casing), casing);
}

bool TextRules::equalIgnoringCase(std::string_view a, std::string_view b) const {
    const Casing casing = tables_->casing;
    if (isAscii(a) && isAscii(b)) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [casing](char x, char y) {
            return foldedAscii(x, casing) == foldedAscii(y, casing);
        });
    }
    return folded(a, casing).units == folded(b, casing).units;
}

std::string TextRules::uniqueKey(std::string_view name) const {
    return foldedToLetters(name, tables_->casing);
}

int TextRules::compare(std::string_view a, std::string_view b) const {
    return tables_->order.compare(a, b);
}

std::vector<std::size_t> TextRules::sortedOrder(std::span<const std::string_view> names) const {
    return tables_->order.sortedOrder(names);
}

}  // namespace tavo
