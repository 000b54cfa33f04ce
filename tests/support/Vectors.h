// The recorded cases of the text rules, in tests/vectors. There is one file for each rule: an
// object with the members "cases" and "count".
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tavo {

// All cases of the file of `rule`. The running test fails unless there are as many as the file
// says, and at least one.
inline std::vector<nlohmann::json> vectorCases(const std::string& rule) {
    const std::string path = TAVO_TEST_DATA "/vectors/" + rule + ".json";
    std::ifstream file(path);
    const auto content = nlohmann::json::parse(file, nullptr, false);
    if (!content.is_object()) {
        ADD_FAILURE() << path << " cannot be read";
        return {};
    }
    auto cases = content.at("cases").get<std::vector<nlohmann::json>>();
    EXPECT_FALSE(cases.empty()) << path;
    EXPECT_EQ(cases.size(), content.at("count").get<std::size_t>()) << path;
    return cases;
}

// The whole case as ASCII text, to name it when it fails.
inline std::string described(const nlohmann::json& vectorCase) {
    return vectorCase.dump(-1, ' ', true);
}

}  // namespace tavo
