#include "platform/linux/bundles/BundleFolder.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using processes::Folder;

class BundleFolder : public testing::Test {
protected:
    void describe(const std::string& entries, const std::string& bundle = "Foo.app") const {
        folder_.write(bundle + "/Contents/Info.plist",
                      "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>");
    }

    [[nodiscard]] BundleFacts facts(const std::string& bundle = "Foo.app") const {
        std::filesystem::create_directories(folder_.path(bundle));
        return readBundleFolder(folder_.path(bundle)).value();
    }

    // The executable's path relative to the bundle, "(none)" where there is no executable.
    [[nodiscard]] std::string executable(const std::string& bundle = "Foo.app") const {
        const auto path = facts(bundle).executablePath;
        return path ? path->substr(folder_.path(bundle).size() + 1) : "(none)";
    }

    Folder folder_;
};

TEST_F(BundleFolder, identifier_and_signature_come_from_the_description) {
    describe(
        "<key>CFBundleIdentifier</key><string>org.example.Foo</string>"
        "<key>CFBundleSignature</key><string>aplt</string>");
    EXPECT_EQ(facts(), (BundleFacts{"org.example.Foo", "aplt", {}}));
}

TEST_F(BundleFolder, values_that_are_no_strings_are_absent) {
    describe(
        "<key>CFBundleIdentifier</key><array/><key>CFBundleSignature</key><integer>1</integer>");
    EXPECT_EQ(facts(), BundleFacts());
}

TEST_F(BundleFolder, a_folder_without_a_description_is_a_bundle_too) {
    EXPECT_EQ(facts(), BundleFacts());
    folder_.script("Foo.app/Foo", "");
    EXPECT_EQ(executable(), "Foo");
}

TEST_F(BundleFolder, what_is_no_folder_is_no_bundle) {
    EXPECT_EQ(readBundleFolder(folder_.path("missing.app")), std::nullopt);
    EXPECT_EQ(readBundleFolder(folder_.write("File.app", "")), std::nullopt);
}

TEST_F(BundleFolder, the_program_is_looked_for_in_three_places_in_order) {
    describe("<key>CFBundleExecutable</key><string>run</string>");
    folder_.script("Foo.app/Foo", "");
    EXPECT_EQ(executable(), "(none)");
    folder_.script("Foo.app/run", "");
    EXPECT_EQ(executable(), "run");
    folder_.script("Foo.app/Contents/run", "");
    EXPECT_EQ(executable(), "Contents/run");
    folder_.script("Foo.app/Contents/MacOS/run", "");
    EXPECT_EQ(executable(), "Contents/MacOS/run");
}

TEST_F(BundleFolder, without_a_name_the_program_has_the_bundles_own) {
    for (const auto& [bundle, name] :
         std::map<std::string, std::string>{{"Foo.app", "Foo"},
                                            {"Bar.bundle", "Bar"},
                                            {"Plain", "Plain"},
                                            {"Foo..app", "Foo."},
                                            {".hidden", ".hidden"},
                                            {"Two words.app", "Two words"},
                                            {"Version 1.2 beta", "Version 1.2 beta"},
                                            {"Ends.", "Ends."}}) {
        SCOPED_TRACE(bundle);
        folder_.script(bundle + "/Contents/MacOS/" + name, "");
        EXPECT_EQ(executable(bundle), "Contents/MacOS/" + name);
    }
}

TEST_F(BundleFolder, a_name_that_leads_out_of_the_bundle_is_no_program) {
    folder_.script("outside", "");
    folder_.script("Foo.app/Contents/outside", "");
    folder_.script("Foo.app/Foo", "");
    for (const std::string name : {"../outside", "../../outside", "../../../outside", "/bin/sh", "",
                                   ".", "..", "x/../../Foo", "./Foo", "Foo/", "a//b"}) {
        SCOPED_TRACE(name);
        describe("<key>CFBundleExecutable</key><string>" + name + "</string>");
        EXPECT_EQ(executable(), "(none)");
    }
}

TEST_F(BundleFolder, a_program_may_lie_further_down_or_be_a_link) {
    describe("<key>CFBundleExecutable</key><string>sub/run</string>");
    folder_.script("Foo.app/Contents/MacOS/sub/run", "");
    EXPECT_EQ(executable(), "Contents/MacOS/sub/run");

    describe("<key>CFBundleExecutable</key><string>link</string>");
    ASSERT_EQ(::symlink("/bin/sh", folder_.path("Foo.app/Contents/MacOS/link").c_str()), 0);
    EXPECT_EQ(executable(), "Contents/MacOS/link");
}

TEST_F(BundleFolder, a_link_to_nothing_does_not_exist) {
    std::filesystem::create_directories(folder_.path("Foo.app/Contents/MacOS"));
    ASSERT_EQ(::symlink("nothing", folder_.path("Foo.app/Contents/MacOS/Foo").c_str()), 0);
    EXPECT_EQ(executable(), "(none)");
}

}  // namespace
}  // namespace tavo
