#include <gtest/gtest.h>

#include "platform/linux/bundles/Icns.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

// What the reader takes for a PNG; it looks no further.
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

// `count` pixels of one value, in runs of at most 130.
std::string packedPlane(int count, int value) {
    std::string bytes;
    while (count > 0) {
        const int run = std::min(count, 130);
        if (run < 3) {
            bytes += static_cast<char>(run - 1);
            bytes.append(static_cast<std::size_t>(run), static_cast<char>(value));
        } else {
            bytes += static_cast<char>(run + 125);
            bytes += static_cast<char>(value);
        }
        count -= run;
    }
    return bytes;
}

std::string packedColours(int side, int red, int green, int blue) {
    const int count = side * side;
    return packedPlane(count, red) + packedPlane(count, green) + packedPlane(count, blue);
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

TEST(Icns, jpeg_2000_and_unknown_chunks_are_passed_over) {
    const std::string jpeg("\0\0\0\x0cjP  \r\n\x87\n", 12);
    const std::string file = icnsFile(icnsChunk("TOC ", "whatever") + icnsChunk("ic09", jpeg) +
                                      icnsChunk("ic07", png("")) + icnsChunk("icnV", "1234"));
    EXPECT_EQ(sides(icnsPictures(file, 512)), std::vector{128});
}

TEST(Icns, run_length_coded_colours_are_unpacked_and_masked) {
    struct Case {
        const char* type;
        const char* mask;
        int side;
        std::string prefix;
    };
    const Case cases[] = {{"is32", "s8mk", 16, ""},
                          {"il32", "l8mk", 32, ""},
                          {"ih32", "h8mk", 48, ""},
                          {"it32", "t8mk", 128, std::string(4, '\0')}};
    for (const Case& row : cases) {
        SCOPED_TRACE(row.type);
        const auto count = static_cast<std::size_t>(row.side * row.side);
        std::string mask(count, '\x80');
        mask.front() = '\0';
        const std::string file =
            icnsFile(icnsChunk(row.type, row.prefix + packedColours(row.side, 1, 200, 77)) +
                     icnsChunk(row.mask, mask));
        const auto pictures = icnsPictures(file, 68);
        ASSERT_EQ(pictures.size(), 1U);
        EXPECT_EQ(pictures[0].side, row.side);
        ASSERT_EQ(pictures[0].pixels.size(), count);
        EXPECT_EQ(pictures[0].pixels.front(), 0x0001c84dU);
        EXPECT_EQ(pictures[0].pixels.back(), 0x8001c84dU);
    }
}

TEST(Icns, literal_runs_are_copied) {
    std::string plane;
    for (int row = 0; row < 16; ++row) {
        plane += '\x0f';
        for (int x = 0; x < 16; ++x) {
            plane += static_cast<char>(row * 16 + x);
        }
    }
    const std::string file = icnsFile(icnsChunk("is32", plane + plane + plane));
    const auto pictures = icnsPictures(file, 16);
    ASSERT_EQ(pictures.size(), 1U);
    for (std::uint32_t i = 0; i < 256; ++i) {
        EXPECT_EQ(pictures[0].pixels[i], 0xff000000U | i << 16U | i << 8U | i);
    }
}

TEST(Icns, without_a_whole_mask_everything_is_opaque) {
    const std::string colours = packedColours(16, 9, 9, 9);
    const std::string none = icnsFile(icnsChunk("is32", colours));
    const std::string shortMask = icnsFile(icnsChunk("is32", colours) + icnsChunk("s8mk", "abc"));
    for (const std::string& file : {none, shortMask}) {
        const auto pictures = icnsPictures(file, 16);
        ASSERT_EQ(pictures.size(), 1U);
        EXPECT_EQ(pictures[0].pixels.front(), 0xff090909U);
    }
}

TEST(Icns, colours_that_end_too_early_are_no_picture) {
    const std::string colours = packedColours(16, 9, 9, 9);
    for (std::size_t length = 0; length < colours.size(); ++length) {
        const std::string file = icnsFile(icnsChunk("is32", colours.substr(0, length)));
        EXPECT_TRUE(icnsPictures(file, 16).empty()) << length;
    }
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
        icnsFile(icnsChunk("ic07", png("abc")) + icnsChunk("is32", packedColours(16, 1, 2, 3)) +
                 icnsChunk("s8mk", std::string(256, 'm')));
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
