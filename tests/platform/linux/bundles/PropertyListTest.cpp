#include <filesystem>
#include <random>

#include <gtest/gtest.h>

#include "platform/linux/bundles/PropertyList.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using processes::Folder;
using Strings = std::map<std::string, std::string>;

constexpr const char* kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n";

std::string plist(const std::string& entries) {
    return kHead + ("<plist version=\"1.0\">\n<dict>\n" + entries + "</dict>\n</plist>\n");
}

Strings parsed(const std::string& content) {
    const Folder folder;
    return readPropertyListStrings(folder.write("Info.plist", content));
}

TEST(PropertyList, string_values_of_the_root_dictionary_are_read) {
    EXPECT_EQ(parsed(plist("<key>CFBundleIdentifier</key><string>org.example.App</string>\n"
                           "<key>CFBundleSignature</key>\n\t<string>aplt</string>\n")),
              (Strings{{"CFBundleIdentifier", "org.example.App"}, {"CFBundleSignature", "aplt"}}));
}

TEST(PropertyList, values_of_other_types_and_inner_values_are_passed_over) {
    EXPECT_EQ(
        parsed(plist("<key>a</key><integer>1</integer><key>b</key><true/>"
                     "<key>c</key><array><string>x</string></array>"
                     "<key>d</key><dict><key>CFBundleSignature</key><string>in</string></dict>"
                     "<key>e</key><string>last</string>")),
        (Strings{{"e", "last"}}));
}

TEST(PropertyList, text_is_taken_as_it_stands) {
    EXPECT_EQ(
        parsed(plist("<key>a &amp; b</key><string> È &lt;x&gt; &#x1F44D; </string>"
                     "<key>c</key><string><![CDATA[<raw>&amp;]]></string>"
                     "<key>empty</key><string/>"
                     "<key>split</key><string>one<!-- no -->two</string>")),
        (Strings{{"a & b", " È <x> 👍 "}, {"c", "<raw>&amp;"}, {"empty", ""}, {"split", "onetwo"}}));
}

TEST(PropertyList, of_a_key_that_comes_twice_the_last_value_holds) {
    EXPECT_EQ(parsed(plist("<key>a</key><string>1</string><key>a</key><string>2</string>"
                           "<key>b</key><string>1</string><key>b</key><integer>2</integer>")),
              (Strings{{"a", "2"}}));
}

struct Broken {
    const char* name;
    std::string content;
};

class UnreadablePropertyList : public testing::TestWithParam<Broken> {};

TEST_P(UnreadablePropertyList, gives_no_values) {
    SCOPED_TRACE(GetParam().name);
    EXPECT_EQ(parsed(GetParam().content), Strings());
}

std::string nested(int levels) {
    std::string content;
    for (int i = 0; i < levels; ++i) {
        content += "<dict><key>k</key>";
    }
    return content;
}

std::string garbage() {
    std::mt19937 random(1);
    std::string bytes(100000, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random() & 0xff);
    }
    return bytes;
}

const std::string kGood = "<key>a</key><string>1</string>";

INSTANTIATE_TEST_SUITE_P(
    Rows, UnreadablePropertyList,
    testing::Values(
        Broken{"empty", ""}, Broken{"garbage", garbage()},
        Broken{"binary", std::string("bplist00\xd1\x01\x02", 11)},
        Broken{"another document", "<html><dict><key>a</key><string>1</string></dict></html>"},
        Broken{"an array at the root", "<plist><array><string>1</string></array></plist>"},
        Broken{"two roots", "<plist><dict>" + kGood + "</dict><dict/></plist>"},
        Broken{"cut off", plist(kGood).substr(0, plist(kGood).size() - 10)},
        Broken{"something after the end", plist(kGood) + "<plist/>"},
        Broken{"an element inside a string", plist(kGood + "<key>b</key><string><b/></string>")},
        Broken{"an entity nobody declared", plist(kGood + "<key>b</key><string>&b;</string>")},
        Broken{"an entity of its own", "<!DOCTYPE plist [<!ENTITY b \"x\">]><plist><dict>" + kGood +
                                           "<key>b</key><string>&b;</string></dict></plist>"},
        Broken{"an entity from a file",
               "<!DOCTYPE plist [<!ENTITY b SYSTEM \"/etc/hostname\">]>"
               "<plist><dict><key>b</key><string>&b;</string></dict>"
               "</plist>"},
        Broken{"65 levels", "<plist><dict>" + kGood + "<key>n</key>" + nested(63) + "</plist>"},
        Broken{"bytes that are not UTF-8", plist(kGood + "<key>b</key><string>\xff</string>")}),
    [](const auto& row) {
        std::string name = row.param.name;
        std::replace_if(
            name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
        return name;
    });

TEST(PropertyList, deep_nesting_is_read_up_to_its_bound) {
    std::string inner;
    for (int i = 0; i < 61; ++i) {
        inner = "<array>" + inner + "</array>";
    }
    // 64 levels, the most that are read: plist, dict, one value and 61 arrays.
    EXPECT_EQ(parsed(plist(kGood + "<key>n</key><array>" + inner + "</array>")),
              (Strings{{"a", "1"}}));
    EXPECT_EQ(parsed(plist(kGood + "<key>n</key><array><array>" + inner + "</array></array>")),
              Strings());
}

TEST(PropertyList, a_hundred_thousand_levels_cost_nothing) {
    std::string content = "<plist><dict>" + kGood + "<key>n</key>";
    for (int i = 0; i < 100000; ++i) {
        content += "<array>";
    }
    EXPECT_EQ(parsed(content), Strings());
}

TEST(PropertyList, entities_that_multiply_are_refused_before_they_do) {
    std::string content = "<!DOCTYPE plist [<!ENTITY a0 \"lol\">";
    for (int i = 1; i <= 20; ++i) {
        content += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            content += "&a" + std::to_string(i - 1) + ";";
        }
        content += "\">";
    }
    content += "]><plist><dict><key>a</key><string>&a20;</string></dict></plist>";
    EXPECT_EQ(parsed(content), Strings());
}

TEST(PropertyList, a_file_of_one_mebibyte_is_read_and_a_larger_one_is_not) {
    const std::string short_ = plist(kGood);
    const std::size_t limit = std::size_t{1} << 20;
    EXPECT_EQ(parsed(short_ + std::string(limit - short_.size(), ' ')), (Strings{{"a", "1"}}));
    EXPECT_EQ(parsed(short_ + std::string(limit - short_.size() + 1, ' ')), Strings());
}

TEST(PropertyList, a_huge_sparse_file_is_not_read) {
    const Folder folder;
    const std::string file = folder.write("Info.plist", plist(kGood));
    std::filesystem::resize_file(file, std::uintmax_t{100} << 20);
    EXPECT_EQ(readPropertyListStrings(file), Strings());
}

TEST(PropertyList, what_is_no_file_gives_no_values_and_is_not_waited_for) {
    const Folder folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("loop2", folder.path("loop1").c_str()), 0);
    ASSERT_EQ(::symlink("loop1", folder.path("loop2").c_str()), 0);
    for (const std::string& path :
         {folder.path("pipe"), folder.path(), folder.path("loop1"), folder.path("missing"),
          std::string("/dev/zero"), std::string("/dev/null"), std::string()}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(readPropertyListStrings(path), Strings());
    }
}

TEST(PropertyList, a_link_to_a_file_is_followed) {
    const Folder folder;
    folder.write("real", plist(kGood));
    ASSERT_EQ(::symlink("real", folder.path("link").c_str()), 0);
    EXPECT_EQ(readPropertyListStrings(folder.path("link")), (Strings{{"a", "1"}}));
}

}  // namespace
}  // namespace tavo
