#include <optional>

#include <gtest/gtest.h>

#include "platform/linux/renderer/Picture.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

constexpr std::uint32_t kRed = 0xffff0000U;
constexpr std::uint32_t kBlue = 0xff0000ffU;

std::optional<IconImage> read(const std::string& bytes, int side = 68) {
    std::vector<std::uint32_t> pixels = drawPicture(bytes, side);
    return pixels.empty() ? std::nullopt : std::optional(IconImage{side, std::move(pixels)});
}

void expectRed(const std::string& bytes) {
    const auto icon = read(bytes);
    ASSERT_TRUE(icon);
    EXPECT_EQ(middleOf(*icon), kRed);
}

std::string svg(const std::string& content, const std::string& attributes = "viewBox='0 0 64 64'") {
    return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' " +
           attributes + ">" + content + "</svg>";
}

const std::string kRedSquare = "<rect width='64' height='64' fill='#ff0000'/>";

// The beginning of a PNG file of this size: the signature and the chunk IHDR with its checksum.
std::string pngHead(std::uint32_t width, std::uint32_t height) {
    const std::string head =
        "IHDR" + bigEndian(width) + bigEndian(height) + std::string("\x08\x06\x00\x00\x00", 5);
    std::uint32_t crc = 0xffffffffU;
    for (const char byte : head) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1U) != 0 ? crc >> 1U ^ 0xedb88320U : crc >> 1U;
        }
    }
    return "\x89PNG\r\n\x1a\n" + bigEndian(13) + head + bigEndian(~crc);
}

TEST(Picture, every_format_is_told_by_its_content) {
    struct Case {
        const char* name;
        std::string bytes;
    };
    const Case cases[] = {
        {"png", pngBytes(48, 48, kRed)},
        {"svg", svgText(48, 48, kRed)},
        {"svgz", gzipped(svgText(48, 48, kRed))},
        {"xpm", xpmText(16, kRed)},
        {"icns", icnsFile(icnsChunk("ic07", pngBytes(128, 128, kRed)))},
    };
    for (const Case& row : cases) {
        for (const int side : {68, 85, 102, 136, 204}) {
            SCOPED_TRACE(testing::Message() << row.name << " at " << side);
            const auto icon = read(row.bytes, side);
            ASSERT_TRUE(icon);
            EXPECT_EQ(icon->side, side);
            ASSERT_EQ(icon->pixels.size(), static_cast<std::size_t>(side * side));
            for (const int at : {1, side / 2, side - 2}) {
                EXPECT_EQ(pixelAt(*icon, at, at), kRed);
            }
        }
    }
}

TEST(Picture, a_picture_that_is_no_square_is_centred) {
    struct Case {
        const char* name;
        std::string bytes;
        bool wide;
    };
    const Case cases[] = {
        {"wide png", pngBytes(100, 50, kRed), true},
        {"high png", pngBytes(50, 100, kRed), false},
        {"wide svg", svgText(100, 50, kRed), true},
        {"high svg", svgText(50, 100, kRed), false},
        {"larger png", pngBytes(400, 200, kRed), true},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const auto icon = read(row.bytes, 80);
        ASSERT_TRUE(icon);
        const auto across = [&](int along, int other) {
            return row.wide ? pixelAt(*icon, along, other) : pixelAt(*icon, other, along);
        };
        EXPECT_EQ(across(40, 10), 0U);
        EXPECT_EQ(across(40, 70), 0U);
        EXPECT_EQ(across(2, 40), kRed);
        EXPECT_EQ(across(77, 40), kRed);
        EXPECT_EQ(across(40, 22), kRed);
        EXPECT_EQ(across(40, 57), kRed);
    }
}

TEST(Picture, a_sliver_is_still_seen) {
    const auto icon = read(pngBytes(1000, 1, kRed), 16);
    ASSERT_TRUE(icon);
    EXPECT_EQ(pixelAt(*icon, 8, 7), kRed);
}

TEST(Picture, pixels_are_premultiplied) {
    const auto icon = read(pngBytes(48, 48, 0x80ff0000U), 48);
    ASSERT_TRUE(icon);
    EXPECT_EQ(middleOf(*icon), 0x80800000U);
}

TEST(Picture, of_an_icns_file_the_next_picture_stands_in_for_a_broken_one) {
    const std::string broken = pngBytes(128, 128, kBlue).substr(0, 60);
    const auto icon =
        read(icnsFile(icnsChunk("ic07", broken) + icnsChunk("ic08", pngBytes(256, 256, kRed))));
    ASSERT_TRUE(icon);
    EXPECT_EQ(middleOf(*icon), kRed);
}

TEST(Picture, what_is_no_picture_is_refused) {
    struct Case {
        const char* name;
        std::string bytes;
    };
    const Case cases[] = {
        {"empty", ""},
        {"text", "hello"},
        {"zeros", std::string(1000, '\0')},
        {"png cut off in its head", pngBytes(48, 48, kRed).substr(0, 20)},
        {"png of absurd size", pngHead(60000, 60000)},
        {"png of no size", pngHead(0, 10)},
        {"png too wide", pngHead(4097, 1)},
        {"xpm of absurd size", "/* XPM */\nstatic char * a[] = {\n\"90000 90000 1 1\",\n"},
        {"xpm without pixels", "/* XPM */\nstatic char * a[] = {\n\"16 16 1 1\"};\n"},
        {"icns without pictures", icnsFile("")},
        {"html", "<html><body>404</body></html>"},
        {"svg cut off", svgText(48, 48, kRed).substr(0, 60)},
        {"svg with nothing to see", svg("")},
        {"svg of gigantic size",
         svg("<rect width='1e300' height='1e300'/>", "viewBox='0 0 1e300 1e300'")},
        {"a transparent picture", pngBytes(48, 48, 0)},
        {"gzip of nothing", gzipped("")},
        {"gzip of zeros", gzipped(std::string(1 << 20U, '\0'))},
        {"gzip cut off", gzipped(svgText(48, 48, kRed)).substr(0, 40)},
        {"jpeg", "\xff\xd8\xff\xe0 and so on"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(read(row.bytes));
    }
}

TEST(Picture, survives_being_cut_off_anywhere) {
    for (const std::string& bytes : {pngBytes(20, 20, kRed), gzipped(svgText(48, 48, kRed)),
                                     xpmText(4, kRed), svgText(9, 9, kRed)}) {
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            const auto icon = read(bytes.substr(0, length), 16);
            EXPECT_TRUE(!icon || icon->pixels.size() == 256U);
        }
    }
}

TEST(Picture, a_drawing_loads_nothing_from_outside) {
    const TemporaryFolder folder;
    writeFile(folder / "blue.png", pngBytes(64, 64, kBlue));
    writeFile(folder / "blue.css", "rect { fill: #0000ff }");
    const std::string file = folder / "blue.png";
    struct Case {
        const char* name;
        std::string text;
    };
    const auto image = [](const std::string& href) {
        return svg(kRedSquare + "<image width='64' height='64' " + href + "/>");
    };
    const Case cases[] = {
        {"a path", image("xlink:href='" + file + "'")},
        {"a file URL", image("xlink:href='file://" + file + "'")},
        {"a relative path", image("xlink:href='blue.png'")},
        {"the network", image("xlink:href='http://127.0.0.1:9/blue.png'")},
        {"without a prefix", image("href='" + file + "'")},
        {"behind another link", image("href='data:image/png;base64,' xlink:href='" + file + "'")},
        {"inside another drawing",
         image("xlink:href='data:image/svg+xml;base64," + std::string("PHN2Zy8+") + "'")},
        {"a style sheet", "<?xml-stylesheet type='text/css' href='" + (folder / "blue.css") +
                              "'?>" + svg(kRedSquare)},
        {"an imported style sheet",
         svg("<style>@import url('" + (folder / "blue.css") + "');</style>" + kRedSquare)},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        expectRed(row.text);
    }
}

// `bytes` in base64 (RFC 4648).
std::string base64(const std::string& bytes) {
    constexpr std::string_view kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char byte : bytes) {
        bits = bits << 8U | static_cast<std::uint8_t>(byte);
        for (count += 8; count >= 6; count -= 6) {
            text += kAlphabet[bits >> static_cast<unsigned>(count - 6) & 63U];
        }
    }
    if (count > 0) {
        text += kAlphabet[bits << static_cast<unsigned>(6 - count) & 63U];
    }
    return text + std::string((4 - text.size() % 4) % 4, '=');
}

TEST(Picture, a_drawing_shows_pictures_inside_itself_unless_they_are_absurd) {
    const auto embedded = [](const std::string& png) {
        return svg("<image width='64' height='64' xlink:href='data:image/png;base64," +
                   base64(png) + "'/>");
    };
    expectRed(embedded(pngBytes(64, 64, kRed)));
    EXPECT_FALSE(read(embedded(pngHead(60000, 60000))));
}

TEST(Picture, entities_are_resolved_within_bounds) {
    expectRed("<!DOCTYPE svg [<!ENTITY red '#ff0000'>]>" +
              svg("<rect width='64' height='64' fill='&red;'/>"));
    std::string bomb = "<!DOCTYPE svg [<!ENTITY a0 'aaaaaaaaaa'>";
    for (int i = 1; i < 10; ++i) {
        bomb += "<!ENTITY a" + std::to_string(i) + " '";
        for (int j = 0; j < 10; ++j) {
            bomb += "&a" + std::to_string(i - 1) + ";";
        }
        bomb += "'>";
    }
    EXPECT_FALSE(read(bomb + "]>" + svg(kRedSquare + "<title>&a9;</title>")));
    EXPECT_FALSE(read("<!DOCTYPE svg [<!ENTITY x SYSTEM 'file:///etc/passwd'>]>" +
                      svg("<title>&x;</title>")));
}

TEST(Picture, repetition_in_a_drawing_is_bounded) {
    const std::string source = "<defs><rect id='a0' width='64' height='64' fill='#ff0000'/></defs>";
    expectRed(svg(source + "<use xlink:href='#a0'/>"));

    std::string bomb = source;
    for (int i = 1; i < 12; ++i) {
        bomb += "<g id='a" + std::to_string(i) + "'>";
        for (int j = 0; j < 10; ++j) {
            bomb += "<use xlink:href='#a" + std::to_string(i - 1) + "'/>";
        }
        bomb += "</g>";
    }
    EXPECT_FALSE(read(svg(bomb)));
}

TEST(Picture, a_drawing_that_uses_itself_is_drawn_once) {
    expectRed(svg("<g id='a'>" + kRedSquare + "<use xlink:href='#a'/></g>"));
    expectRed(svg("<g id='a'>" + kRedSquare + "<use xlink:href='#b'/></g>" + "<g id='b'>" +
                  kRedSquare + "<use xlink:href='#a'/></g>"));
}

TEST(Picture, drawings_without_a_view_box_fill_the_square) {
    for (const char* const attributes :
         {"width='32' height='32'", "width='32px' height='32px'", "", "width='100%'"}) {
        SCOPED_TRACE(attributes);
        expectRed(svg("<rect width='32' height='32' fill='#ff0000'/>", attributes));
    }
}

}  // namespace
}  // namespace tavo
