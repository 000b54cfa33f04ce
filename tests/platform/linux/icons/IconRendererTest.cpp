#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/icons/IconRenderer.h"
#include "tests/platform/linux/fixtures/IconFixture.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using namespace std::chrono_literals;
using processes::children;

constexpr std::uint32_t kRed = 0xffff0000U;

class IconRendererTest : public testing::Test {
protected:
    std::string picture() { return world_.addPng("red.png", 48, kRed); }

    std::string file(const std::string& name, const std::string& bytes) {
        writeFile(world_ / name, bytes);
        return world_ / name;
    }

    // Writes a shell script that a test lets be started in place of the renderer.
    std::string impostor(const std::string& script) {
        const std::string path = file("impostor", "#!/bin/sh\n" + script + "\n");
        ::chmod(path.c_str(), 0700);
        return path;
    }

    void expectRed(const IconRenderer::Answer& answer) {
        EXPECT_FALSE(answer.failed);
        ASSERT_TRUE(answer.image);
        EXPECT_EQ(middleOf(*answer.image), kRed);
    }

    IconWorld world_;
    IconRenderer renderer_{world_.environment().renderer};
};

TEST_F(IconRendererTest, a_picture_comes_in_the_size_that_was_asked_for) {
    for (const int side : {1, 68, 136, 204, 2048}) {
        const auto answer = renderer_.draw(picture(), side);
        ASSERT_TRUE(answer.image);
        EXPECT_EQ(answer.image->side, side);
        EXPECT_EQ(answer.image->pixels.size(), static_cast<std::size_t>(side) * side);
        EXPECT_EQ(middleOf(*answer.image), kRed);
    }
}

TEST_F(IconRendererTest, one_process_serves_one_thread_until_it_rests) {
    EXPECT_TRUE(children().empty());
    expectRed(renderer_.draw(picture(), 68));
    expectRed(renderer_.draw(picture(), 68));
    EXPECT_EQ(children().size(), 1U);
    renderer_.rest();
    EXPECT_TRUE(children().empty());
    expectRed(renderer_.draw(picture(), 68));
}

TEST_F(IconRendererTest, threads_wait_for_nothing_but_their_own_pictures) {
    const std::string path = picture();
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < 20; ++round) {
                    expectRed(renderer_.draw(path, 68));
                }
            });
        }
    }
    EXPECT_LE(children().size(), 3U);
}

TEST_F(IconRendererTest, a_file_that_shows_no_picture_is_no_failure) {
    ASSERT_EQ(::mkfifo((world_ / "pipe").c_str(), 0600), 0);
    const std::string huge = file("huge.png", "");
    ASSERT_EQ(::truncate(huge.c_str(), std::int64_t{4} << 30U), 0);
    const std::string locked = file("locked.png", pngBytes(48, 48, kRed));
    ::chmod(locked.c_str(), 0);
    struct Case {
        const char* name;
        std::string path;
    };
    const Case cases[] = {
        {"a file that is gone", world_ / "gone.png"},
        {"text", file("text", "hello")},
        {"a folder", world_ / "."},
        {"a pipe", world_ / "pipe"},
        {"a device", "/dev/zero"},
        {"four gigabytes of nothing", huge},
        {"an empty path", ""},
        {"an endless path", std::string(5000, 'x')},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const auto answer = renderer_.draw(row.path, 68);
        EXPECT_FALSE(answer.image);
        EXPECT_FALSE(answer.failed);
    }
    if (::geteuid() != 0) {
        EXPECT_FALSE(renderer_.draw(locked, 68).image);
    }
    EXPECT_EQ(children().size(), 1U);
    expectRed(renderer_.draw(picture(), 68));
}

TEST_F(IconRendererTest, a_renderer_that_ends_is_replaced_and_leaves_no_zombie) {
    expectRed(renderer_.draw(picture(), 68));
    ASSERT_EQ(children().size(), 1U);
    ASSERT_EQ(::kill(*children().begin(), SIGKILL), 0);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(renderer_.draw(picture(), 68).failed);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    EXPECT_TRUE(children().empty());
    expectRed(renderer_.draw(picture(), 68));
}

TEST_F(IconRendererTest, what_is_no_renderer_is_ended_and_says_one_line) {
    struct Case {
        const char* name;
        std::string script;
    };
    const Case cases[] = {
        {"one that ends", "exit 1"},
        {"one that ends within its answer", "printf '\\020\\022\\000\\000pixels'"},
        {"one that answers nonsense", "printf 'Hello, this is not a number of pixels.\\n'; read x"},
        {"one that sends more than was asked for", "cat /dev/zero | tr '\\000' '\\377'"},
        {"one that keeps silent", "exec sleep 60"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        IconRenderer renderer(impostor(row.script));
        testing::internal::CaptureStderr();
        const auto start = std::chrono::steady_clock::now();
        const auto answer = renderer.draw(picture(), 68);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);
        EXPECT_TRUE(answer.failed);
        EXPECT_FALSE(answer.image);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    }
}

TEST_F(IconRendererTest, a_missing_renderer_is_told_once) {
    IconRenderer renderer(world_ / "nothing");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(renderer.draw(picture(), 68).failed);
    EXPECT_TRUE(renderer.draw(picture(), 68).failed);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
}

std::string svg(const std::string& content) {
    return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' "
           "viewBox='0 0 64 64'>" +
           content + "</svg>";
}

std::string repeated(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

// SVG elements: `first`, then `count` that each refer to the one before. If they refer to it twice,
// drawing the last one draws `first` 2^count times. In the text `twice` of such an element, "@"
// stands for its number and "%" for the reference.
std::string doubling(int count, const std::string& first, const std::string& twice) {
    std::string all = first;
    for (int i = 1; i <= count; ++i) {
        std::string next = twice;
        for (const auto& [mark, text] :
             {std::pair{'@', std::to_string(i)}, std::pair{'%', "#u" + std::to_string(i - 1)}}) {
            for (auto at = next.find(mark); at != std::string::npos; at = next.find(mark)) {
                next.replace(at, 1, text);
            }
        }
        all += next;
    }
    return all;
}

TEST_F(IconRendererTest, a_hostile_picture_takes_its_time_and_no_more) {
    std::string attributes;
    for (int i = 0; i < 100'000; ++i) {
        attributes += " a" + std::to_string(i) + "='1'";
    }
    std::string rules;
    while (rules.size() < 1'000'000) {
        rules += "g" + std::to_string(rules.size()) + " > rect:first-child{fill:red}";
    }
    std::string entities = "<!DOCTYPE svg [<!ENTITY a0 'aaaaaaaaaa'>";
    for (int i = 1; i < 10; ++i) {
        entities += "<!ENTITY a" + std::to_string(i) + " '" +
                    repeated(10, "&a" + std::to_string(i - 1) + ";") + "'>";
    }
    struct Case {
        const char* name;
        std::string bytes;
    };
    const Case cases[] = {
        {"100,000 attributes", svg("<rect" + attributes + "/>")},
        {"100,000 uses",
         svg("<g id='a'><circle r='9'/></g>" + repeated(100'000, "<use xlink:href='#a'/>"))},
        {"uses of uses", svg("<defs>" +
                             doubling(40, "<g id='u0'><rect width='9' height='9'/></g>",
                                      "<g id='u@'><use xlink:href='%'/><use "
                                      "xlink:href='%'/></g>") +
                             "</defs>")},
        {"a chain of uses",
         svg(doubling(5000, "<g id='u0'><rect/></g>", "<g id='u@'><use xlink:href='%'/></g>"))},
        {"a megabyte of style rules",
         svg("<style>" + rules + "</style>" + repeated(5000, "<g><rect/></g>"))},
        {"filters", svg("<filter id='f'>" + repeated(500, "<feGaussianBlur stdDeviation='30'/>") +
                        "</filter>" +
                        repeated(50,
                                 "<rect width='64' height='64' "
                                 "filter='url(#f)'/>"))},
        {"entities", entities + "]>" + svg("<title>&a9;</title>")},
        {"depth", svg(repeated(1'000'000, "<g>"))},
        {"a gzipped gzip", gzipped(gzipped(svg("<rect/>")))},
        {"a gigabyte of blanks", gzipped(svg(std::string(std::size_t{300} << 20U, ' ')))},
        {"noise", "\x89PNG\r\n\x1a\n" + std::string(1'000'000, '\x55')},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const std::string path = file("hostile", row.bytes);
        testing::internal::CaptureStderr();
        const auto start = std::chrono::steady_clock::now();
        const auto answer = renderer_.draw(path, 136);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        const std::string said = testing::internal::GetCapturedStderr();
        std::printf("%-28s %5.2f s %s\n", row.name, took.count(),
                    !said.empty()  ? "ended"
                    : answer.image ? "drawn"
                                   : "refused");
        EXPECT_LT(took, 3s);
        EXPECT_LE(std::ranges::count(said, '\n'), 1) << said;
        EXPECT_TRUE(said.empty() || !answer.image) << said;
        expectRed(renderer_.draw(picture(), 68));
    }
}

}  // namespace
}  // namespace tavo
