#include <gtest/gtest.h>

#include "catalogue/BundleName.h"
#include "tests/support/Vectors.h"

namespace tavo {
namespace {

TEST(BundleName, every_known_entry_is_kept_or_not_as_expected) {
    for (const auto& row : vectorCases("bundle-names")) {
        const std::string entry = row.at("entry").get<std::string>();
        SCOPED_TRACE(entry);
        const auto name = bundleName(entry);
        ASSERT_EQ(name.has_value(), row.at("kept").get<bool>());
        if (name) {
            EXPECT_EQ(*name, row.at("name").get<std::string>());
        }
    }
}

TEST(BundleName, loses_only_the_last_extension) {
    EXPECT_EQ(bundleName("Foo.Bar.app"), "Foo.Bar");
    EXPECT_EQ(bundleName("Foo..app"), "Foo.");
}

TEST(BundleName, an_upper_case_extension_makes_no_bundle) {
    EXPECT_EQ(bundleName("Foo.APP"), std::nullopt);
}

}  // namespace
}  // namespace tavo
