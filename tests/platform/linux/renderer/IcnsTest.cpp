#include <gtest/gtest.h>

#include "platform/linux/renderer/Icns.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

// A picture that passes for a PNG: the reader of .icns files looks at these first bytes alone.
std::string png(const std::string& content) {
    return "\x89PNG\r\n\x1a\n" + content;
}

std::vector<int> sides(const std::vector<IcnsPicture>& pictures) {
    std::vector<int> sides;
    for (const IcnsPicture& picture : pictures) {
        sides.push_back(picture.side);
    }
    return sides;
}

TEST(Icns, every_png_type_has_its_size) {
    struct Case {
        const char* type;
        int side;
    };
    const Case cases[] = {{"icp4", 16},  {"icp5", 32},  {"icp6", 64},   {"ic07", 128},
                          {"ic08", 256}, {"ic09", 512}, {"ic10", 1024}, {"ic11", 32},
                          {"ic12", 64},  {"ic13", 256}, {"ic14", 512}};
    for (const Case& row : cases) {
        SCOPED_TRACE(row.type);
        const std::string content = png(row.type);
        const std::string file = icnsFile(icnsChunk(row.type, content));
        const auto pictures = icnsPictures(file, 68);
        ASSERT_EQ(pictures.size(), 1U);
        EXPECT_EQ(pictures[0].side, row.side);
        EXPECT_EQ(pictures[0].png, content);
    }
}

TEST(Icns, the_smallest_that_is_large_enough_comes_first) {
    const std::string file = icnsFile(icnsChunk("ic10", png("")) + icnsChunk("ic11", png("")) +
                                      icnsChunk("ic08", png("")) + icnsChunk("ic12", png("")) +
                                      icnsChunk("ic07", png("")));
    EXPECT_EQ(sides(icnsPictures(file, 68)), (std::vector{128, 256, 1024, 64, 32}));
    EXPECT_EQ(sides(icnsPictures(file, 128)), (std::vector{128, 256, 1024, 64, 32}));
    EXPECT_EQ(sides(icnsPictures(file, 204)), (std::vector{256, 1024, 128, 64, 32}));
    EXPECT_EQ(sides(icnsPictures(file, 2000)), (std::vector{1024, 256, 128, 64, 32}));
}

TEST(Icns, chunks_of_other_codings_are_left_out) {
    const std::string jpeg("\0\0\0\x0cjP  \r\n\x87\n", 12);
    const std::string file = icnsFile(icnsChunk("TOC ", "whatever") + icnsChunk("ic09", jpeg) +
                                      icnsChunk("is32", "run-length coded") +
                                      icnsChunk("ic07", png("")) + icnsChunk("icnV", "1234"));
    EXPECT_EQ(sides(icnsPictures(file, 512)), std::vector{128});
}

TEST(Icns, chunks_that_do_not_fit_end_the_reading) {
    const std::string good = icnsChunk("ic07", png(""));
    const std::string tooLong = "ic08" + bigEndian(0x7fffffff) + png("");
    const std::string tooShort = "ic08" + bigEndian(7) + png("");
    const std::string zero = "ic08" + bigEndian(0) + png("");
    for (const std::string& bad : {tooLong, tooShort, zero}) {
        const std::string file = icnsFile(good + bad + icnsChunk("ic09", png("")));
        EXPECT_EQ(sides(icnsPictures(file, 68)), std::vector{128});
    }
}

TEST(Icns, what_is_no_icns_file_has_no_pictures) {
    EXPECT_TRUE(icnsPictures("", 68).empty());
    EXPECT_TRUE(icnsPictures("icns", 68).empty());
    EXPECT_TRUE(icnsPictures(icnsFile(""), 68).empty());
    EXPECT_TRUE(icnsPictures("icns" + bigEndian(0) + icnsChunk("ic07", png("")), 68).empty());
    EXPECT_TRUE(icnsPictures("scni" + bigEndian(24) + icnsChunk("ic07", png("")), 68).empty());
}

TEST(Icns, survives_being_cut_off_anywhere) {
    const std::string file =
        icnsFile(icnsChunk("ic07", png("abc")) + icnsChunk("ic11", png("def")));
    for (std::size_t length = 0; length < file.size(); ++length) {
        EXPECT_LE(icnsPictures(file.substr(0, length), 16).size(), 2U);
    }
    EXPECT_EQ(icnsPictures(file, 16).size(), 2U);
}

TEST(Icns, only_so_many_chunks_are_looked_at) {
    std::string chunks;
    for (int i = 0; i < 100000; ++i) {
        chunks += icnsChunk("ic07", png(""));
    }
    EXPECT_LE(icnsPictures(icnsFile(chunks), 68).size(), 256U);
}

}  // namespace
}  // namespace tavo
