#include <array>
#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <netinet/in.h>

#include "platform/linux/icons/GenericIcon.h"
#include "platform/linux/icons/XdgIconSource.h"
#include "platform/posix/FileDescriptor.h"
#include "tests/contracts/IconSourceContract.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kRed = 0xffff0000U;
constexpr std::uint32_t kGreen = 0xff00ff00U;
constexpr std::uint32_t kBlue = 0xff0000ffU;
constexpr int kSize = 68;

constexpr int kApplications = 8;

std::uint32_t colourOf(int number) {
    return 0xff000000U | static_cast<std::uint32_t>(number * 30 + 10);
}

// Desktop entries whose icons are in a theme, some as SVG and some as PNG, with an empty cache.
class ThemedWorld {
public:
    ThemedWorld() {
        world_.addTheme("hicolor", {{"128", 128, ""}, {"scalable", 128, "Type=Scalable\n"}});
        for (int number = 0; number < kApplications; ++number) {
            const std::string name = "app" + std::to_string(number);
            if (number % 2 == 0) {
                world_.addPng("system/icons/hicolor/128/" + name + ".png", 128, colourOf(number));
            } else {
                writeFile(world_ / ("system/icons/hicolor/scalable/" + name + ".svg"),
                          svgText(16, 16, colourOf(number)));
            }
            paths_.push_back(world_.addEntry(name, name));
        }
        iconless_ = world_.addEntry("none", "nothing");
        source_ = makeXdgIconSource(world_.environment());
    }

    IconSource& source() { return *source_; }
    std::string application(int number) { return paths_.at(static_cast<std::size_t>(number)); }
    std::string applicationWithoutIcon() { return iconless_; }

private:
    IconWorld world_;
    std::vector<std::string> paths_;
    std::string iconless_;
    std::unique_ptr<XdgIconSource> source_;
};

// Application bundles with .icns files; drawn icons are not cached.
class BundleWorld {
public:
    BundleWorld() {
        for (int number = 0; number < kApplications; ++number) {
            const std::string png = pngBytes(128, 128, colourOf(number));
            writeFile(application(number) + "/Contents/Resources/icon.icns",
                      icnsFile(icnsChunk("ic07", png)));
        }
        IconEnvironment environment = world_.environment();
        environment.cacheFolder.clear();
        source_ = makeXdgIconSource(environment);
    }

    IconSource& source() { return *source_; }
    std::string application(int number) {
        return world_ / ("apps/" + std::to_string(number) + ".app");
    }
    std::string applicationWithoutIcon() { return world_ / "apps/none.app"; }

private:
    IconWorld world_;
    std::unique_ptr<XdgIconSource> source_;
};

using Worlds = testing::Types<ThemedWorld, BundleWorld>;
INSTANTIATE_TYPED_TEST_SUITE_P(Xdg, IconSourceContract, Worlds);

class XdgIconSourceTest : public testing::Test {
protected:
    XdgIconSourceTest() {
        world_.addTheme("hicolor", {{"48", 48, ""}, {"128", 128, ""}});
        source_ = newSource();
    }

    [[nodiscard]] std::unique_ptr<XdgIconSource> newSource(
        BundleIconFile bundleIconFile = {}) const {
        return makeXdgIconSource(world_.environment(), std::move(bundleIconFile));
    }

    std::uint32_t colour(const std::string& path, double scale = 1) {
        return middleOf(source_->icon(path, kSize, scale));
    }

    [[nodiscard]] bool isGeneric(const std::string& path) {
        return source_->icon(path, kSize, 1) == drawGenericIcon(kSize);
    }

    [[nodiscard]] std::size_t cachedFiles() const {
        const fs::path folder = world_.environment().cacheFolder;
        return fs::exists(folder)
                   ? static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}))
                   : 0;
    }

    IconWorld world_;
    std::unique_ptr<XdgIconSource> source_;
};

TEST_F(XdgIconSourceTest, an_entry_has_the_icon_that_it_names) {
    world_.addPng("system/icons/hicolor/128/themed.png", 128, kRed);
    const std::string loose = world_.addPng("anywhere/my icon.dat", 32, kBlue);
    EXPECT_EQ(colour(world_.addEntry("a", "themed")), kRed);
    EXPECT_EQ(colour(world_.addEntry("b", "themed.png")), kRed);
    EXPECT_EQ(colour(world_.addEntry("c", loose)), kBlue);
}

TEST_F(XdgIconSourceTest, blanks_around_an_icons_name_do_not_count) {
    world_.addPng("system/icons/hicolor/128/themed.png", 128, kRed);
    EXPECT_EQ(colour(world_.addEntry("a", " themed \t")), kRed);
}

TEST_F(XdgIconSourceTest, an_entry_has_the_icon_of_the_users_language) {
    world_.addPng("system/icons/hicolor/128/flag.png", 128, kRed);
    world_.addPng("system/icons/hicolor/128/flag-it.png", 128, kBlue);
    const std::string path = world_.addEntry("a", "flag\nIcon[it]=flag-it");
    struct Case {
        const char* name;
        std::vector<std::string> languages;
        std::uint32_t colour;
    };
    const Case cases[] = {
        {"no language", {}, kRed},
        {"the entry's", {"it_IT", "it", "C"}, kBlue},
        {"another, over the same cache", {"de", "C"}, kRed},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        IconEnvironment environment = world_.environment();
        environment.languages = row.languages;
        source_ = makeXdgIconSource(environment);
        EXPECT_EQ(colour(path), row.colour);
    }
}

TEST_F(XdgIconSourceTest, what_names_no_icon_that_can_be_shown_has_the_generic_one) {
    world_.addPng("system/icons/hicolor/48/fine.png", 48, kRed);
    writeFile(world_ / "applications/j.desktop", "[Desktop Entry]\nIcon=fine\ngarbage\n");
    writeFile(world_ / "broken.png", "no picture");
    writeFile(world_ / "system/icons/hicolor/48/broken.png", "no picture");
    ASSERT_EQ(::mkfifo((world_ / "pipe").c_str(), 0600), 0);
    struct Case {
        const char* name;
        std::string path;
    };
    const Case cases[] = {
        {"an icon that no theme has", world_.addEntry("a", "nothing")},
        {"no icon", world_.addEntry("b", "")},
        {"a relative path", world_.addEntry("c", "../broken.png")},
        {"a missing file", world_.addEntry("d", world_ / "missing.png")},
        {"a broken file", world_.addEntry("e", world_ / "broken.png")},
        {"a broken file of the theme", world_.addEntry("f", "broken")},
        {"a pipe", world_.addEntry("g", world_ / "pipe")},
        {"a device", world_.addEntry("h", "/dev/zero")},
        {"a folder", world_.addEntry("i", world_ / "system")},
        {"an ill-formed entry", world_ / "applications/j.desktop"},
        {"an entry that is gone", world_ / "gone.desktop"},
        {"a bundle that is gone", world_ / "gone.app"},
        {"any other file", "/etc/hostname"},
        {"nothing", ""},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(isGeneric(row.path));
        EXPECT_TRUE(isGeneric(row.path)) << "from the cache";
    }
}

TEST_F(XdgIconSourceTest, the_themes_generic_icon_is_preferred_to_the_drawn_one) {
    const std::string path = world_.addEntry("a", "nothing");
    EXPECT_TRUE(isGeneric(path));
    world_.addPng("system/icons/hicolor/48/application-x-executable.png", 48, kGreen);
    source_->refresh();
    EXPECT_EQ(colour(path), kGreen);
    EXPECT_EQ(colour("/opt/nothing.app"), kGreen);
}

TEST_F(XdgIconSourceTest, another_size_stands_in_for_a_broken_one) {
    writeFile(world_ / "system/icons/hicolor/128/a.png", "no picture");
    world_.addPng("system/icons/hicolor/48/a.png", 48, kRed);
    EXPECT_EQ(colour(world_.addEntry("a", "a")), kRed);
}

TEST_F(XdgIconSourceTest, the_size_fits_the_scale) {
    world_.addPng("system/icons/hicolor/48/a.png", 48, kRed);
    world_.addPng("system/icons/hicolor/128/a.png", 128, kBlue);
    const std::string path = world_.addEntry("a", "a");
    EXPECT_EQ(middleOf(source_->icon(path, 48, 1)), kRed);
    EXPECT_EQ(middleOf(source_->icon(path, 48, 2)), kBlue);
    for (const auto& [scale, side] : {std::pair{1.0, 68}, std::pair{1.25, 85}, std::pair{1.5, 102},
                                      std::pair{2.0, 136}, std::pair{3.0, 204}}) {
        EXPECT_EQ(source_->icon(path, kSize, scale).side, side);
        EXPECT_EQ(source_->icon(path, kSize, scale).side, side) << "from the cache";
    }
}

TEST_F(XdgIconSourceTest, a_size_beyond_all_reason_is_bounded) {
    EXPECT_EQ(source_->icon("/opt/a.app", 1000000, 3).side, 2048);
}

TEST_F(XdgIconSourceTest, a_bundle_has_the_icon_file_that_it_declares) {
    const std::string bundle = world_ / "My.app";
    const auto put = [&](const std::string& name, std::uint32_t colour) {
        writeFile(bundle + "/Contents/Resources/" + name,
                  icnsFile(icnsChunk("ic07", pngBytes(128, 128, colour))));
    };
    put("AAA.icns", kRed);
    put("Declared.icns", kGreen);
    put("Bare", kBlue);
    struct Case {
        const char* name;
        std::optional<std::string> declared;
        std::uint32_t colour;
    };
    const Case cases[] = {
        {"without its ending", "Declared", kGreen},
        {"with its ending", "Declared.icns", kGreen},
        {"a file without ending", "Bare", kBlue},
        {"a missing file", "Gone", kRed},
        {"a path", "../Resources/Declared", kRed},
        {"an empty name", "", kRed},
        {"nothing", std::nullopt, kRed},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        fs::remove_all(world_.environment().cacheFolder);
        source_ = newSource([&](const std::string& asked) {
            EXPECT_EQ(asked, bundle);
            return row.declared;
        });
        EXPECT_EQ(colour(bundle), row.colour);
    }
    source_ = newSource();
    fs::remove_all(world_.environment().cacheFolder);
    EXPECT_EQ(colour(bundle), kRed) << "without a function to ask";
}

TEST_F(XdgIconSourceTest, a_bundle_whose_declaration_changes_is_asked_again) {
    const std::string bundle = world_ / "My.app";
    for (const auto& [name, colour] : {std::pair{"one", kRed}, std::pair{"two", kBlue}}) {
        writeFile(bundle + "/Contents/Resources/" + name + ".icns",
                  icnsFile(icnsChunk("ic07", pngBytes(128, 128, colour))));
    }
    writeFile(bundle + "/Contents/Info.plist", "1");
    std::string declared = "one";
    int questions = 0;
    source_ = newSource([&](const std::string&) {
        ++questions;
        return std::optional(declared);
    });
    EXPECT_EQ(colour(bundle), kRed);
    EXPECT_EQ(colour(bundle), kRed);
    EXPECT_EQ(questions, 1);
    declared = "two";
    writeFile(bundle + "/Contents/Info.plist", "changed");
    EXPECT_EQ(colour(bundle), kBlue);
}

TEST_F(XdgIconSourceTest, a_rendered_icon_is_kept_across_runs) {
    const std::string file = world_.addPng("system/icons/hicolor/128/a.png", 128, kRed);
    const std::string path = world_.addEntry("a", "a");
    EXPECT_EQ(colour(path), kRed);
    EXPECT_EQ(cachedFiles(), 1U);

    // Other pixels, but the same modification time and size: only decoding the file shows the
    // change.
    const auto date = fs::last_write_time(file);
    const std::string red = readFile(file);
    std::string blue = pngBytes(128, 128, kBlue);
    ASSERT_LE(blue.size(), red.size());
    blue.resize(red.size(), '\0');
    writeFile(file, blue);
    fs::last_write_time(file, date);
    EXPECT_EQ(colour(path), kRed);
    source_ = newSource();
    EXPECT_EQ(colour(path), kRed);
    fs::remove_all(world_.environment().cacheFolder);
    EXPECT_EQ(colour(path), kBlue);
}

TEST_F(XdgIconSourceTest, a_changed_file_is_rendered_anew) {
    const std::string file = world_.addPng("system/icons/hicolor/128/a.png", 128, kRed);
    setDate(file, 1'600'000'000);
    const std::string path = world_.addEntry("a", "a");
    EXPECT_EQ(colour(path), kRed);
    world_.addPng("system/icons/hicolor/128/a.png", 128, kBlue);
    EXPECT_EQ(colour(path), kBlue);
}

TEST_F(XdgIconSourceTest, an_entry_that_names_another_icon_has_that_one) {
    world_.addPng("system/icons/hicolor/128/a.png", 128, kRed);
    world_.addPng("system/icons/hicolor/128/b.png", 128, kBlue);
    EXPECT_EQ(colour(world_.addEntry("app", "a")), kRed);
    EXPECT_EQ(colour(world_.addEntry("app", "b")), kBlue);
}

TEST_F(XdgIconSourceTest, what_comes_into_the_theme_is_seen_after_a_refresh_and_by_the_next_run) {
    const std::string path = world_.addEntry("a", "a");
    EXPECT_TRUE(isGeneric(path));
    world_.addPng("system/icons/hicolor/48/a.png", 48, kRed);
    source_->refresh();
    EXPECT_EQ(colour(path), kRed);
    world_.addPng("system/icons/hicolor/128/a.png", 128, kBlue);
    source_ = newSource();
    EXPECT_EQ(colour(path), kBlue);
    fs::remove(world_ / "system/icons/hicolor/128/a.png");
    EXPECT_EQ(colour(path), kRed) << "what is gone is not shown even without a refresh";
}

TEST_F(XdgIconSourceTest, other_changes_in_the_theme_cost_no_rendering) {
    const std::string file = world_.addPng("system/icons/hicolor/128/a.png", 128, kRed);
    const std::string path = world_.addEntry("a", "a");
    EXPECT_EQ(colour(path), kRed);
    const auto date = fs::last_write_time(file);
    const auto size = fs::file_size(file);
    writeFile(file, std::string(size, 'x'));
    fs::last_write_time(file, date);
    world_.addPng("system/icons/hicolor/128/unrelated.png", 8, kBlue);
    source_->refresh();
    EXPECT_EQ(colour(path), kRed);
}

TEST_F(XdgIconSourceTest, an_absolute_file_that_comes_later_is_seen) {
    const std::string path = world_.addEntry("a", world_ / "late.png");
    EXPECT_TRUE(isGeneric(path));
    world_.addPng("late.png", 48, kRed);
    EXPECT_EQ(colour(path), kRed);
}

TEST_F(XdgIconSourceTest, another_theme_has_other_icons) {
    for (const auto& [theme, colour] : {std::pair{"One", kRed}, std::pair{"Two", kBlue}}) {
        world_.addTheme(theme, {{"128", 128, ""}});
        world_.addPng(std::string("system/icons/") + theme + "/128/a.png", 128, colour);
    }
    const std::string path = world_.addEntry("a", "a");
    EXPECT_TRUE(isGeneric(path));
    writeFile(world_ / "config/gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=One\n");
    EXPECT_TRUE(isGeneric(path)) << "not before a refresh";
    source_->refresh();
    EXPECT_EQ(colour(path), kRed);
    source_->preferTheme("Two");
    EXPECT_EQ(colour(path), kBlue);
    source_->preferTheme("");
    EXPECT_EQ(colour(path), kRed);
}

TEST_F(XdgIconSourceTest, garbage_in_the_cache_is_written_over) {
    world_.addPng("system/icons/hicolor/128/a.png", 128, kRed);
    const std::string path = world_.addEntry("a", "a");
    EXPECT_EQ(colour(path), kRed);
    const fs::path kept = *fs::directory_iterator(world_.environment().cacheFolder);
    writeFile(kept.string(), "garbage");
    EXPECT_EQ(colour(path), kRed);
    EXPECT_GT(fs::file_size(kept), 68U * 68U * 4U);
}

TEST_F(XdgIconSourceTest, works_without_a_cache_folder_that_can_be_written) {
    world_.addPng("system/icons/hicolor/128/a.png", 128, kRed);
    const std::string path = world_.addEntry("a", "a");
    writeFile(world_ / "cache", "not a folder");
    EXPECT_EQ(colour(path), kRed);
    EXPECT_EQ(colour(path), kRed);
}

TEST_F(XdgIconSourceTest, to_refresh_does_not_wait_for_a_theme_that_is_being_read) {
    // An X server, on a free port of the loopback, that accepts a connection and says nothing.
    const FileDescriptor server(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::bind(server.get(), reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(::listen(server.get(), 1), 0);
    ASSERT_EQ(::getsockname(server.get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
    IconEnvironment environment = world_.environment();
    environment.display = "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - 6000);
    source_ = makeXdgIconSource(environment);

    auto icon = std::async(std::launch::async, [&] { return source_->icon("", kSize, 1); });
    FileDescriptor asking(::accept4(server.get(), nullptr, nullptr, SOCK_CLOEXEC));
    ASSERT_TRUE(asking.valid());
    source_->refresh();
    source_->preferTheme("Other");
    EXPECT_EQ(icon.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    asking.close();
    EXPECT_EQ(icon.get(), drawGenericIcon(kSize));
}

TEST_F(XdgIconSourceTest, threads_may_ask_and_refresh_at_once) {
    std::vector<std::string> paths;
    for (std::uint32_t i = 0; i < 12; ++i) {
        const std::string name = "app" + std::to_string(i);
        const std::string colour = "system/icons/hicolor/128/" + name;
        if (i % 2 == 0) {
            world_.addPng(colour + ".png", 128, 0xff000000U | i);
        } else {
            writeFile(world_ / (colour + ".svg"), svgText(128, 128, i));
        }
        paths.push_back(world_.addEntry(name, name));
    }
    std::array<int, 4> wrong = {};
    {
        std::vector<std::jthread> threads;
        for (int& count : wrong) {
            threads.emplace_back([&] {
                for (std::uint32_t round = 0; round < 3; ++round) {
                    for (std::uint32_t i = 0; i < 12; ++i) {
                        count += colour(paths[i], 1.5) == (0xff000000U | i) ? 0 : 1;
                    }
                }
            });
        }
        for (int i = 0; i < 5; ++i) {
            source_->refresh();
        }
    }
    EXPECT_EQ(wrong, (std::array{0, 0, 0, 0}));
    EXPECT_EQ(cachedFiles(), 12U);
}

}  // namespace
}  // namespace tavo
