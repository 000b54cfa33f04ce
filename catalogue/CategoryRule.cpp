#include "catalogue/CategoryRule.h"

#include "support/Text.h"

namespace tavo {

std::vector<std::string_view> keywordsOf(std::string_view ruleText) {
    std::vector<std::string_view> keywords;
    while (!ruleText.empty()) {
        const std::size_t comma = ruleText.find(',');
        const std::string_view keyword = trimmed(ruleText.substr(0, comma));
        if (!keyword.empty()) {
            keywords.push_back(keyword);
        }
        ruleText = comma == std::string_view::npos ? "" : ruleText.substr(comma + 1);
    }
    return keywords;
}

}  // namespace tavo
