#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "platform/linux/icons/IconTheme.h"
#include "platform/linux/icons/IconThemeIndex.h"
#include "tests/platform/linux/fixtures/IconFixture.h"

namespace tavo {
namespace {

const std::string kScalable = "Type=Scalable\nMinSize=8\nMaxSize=512\n";

class IconThemeTest : public testing::Test {
protected:
    void put(const std::string& file) { writeFile(world_ / file, "x"); }

    [[nodiscard]] IconTheme theme(const std::string& name = "Main",
                                  const std::string& fallback = "hicolor") const {
        return {world_.environment(), name, fallback};
    }

    // The files that the theme finds for an icon, relative to the world's folder.
    [[nodiscard]] std::vector<std::string> found(const IconTheme& theme, const std::string& name,
                                                 double scale = 1) const {
        std::vector<std::string> files =
            theme.files(name, static_cast<int>(std::round(68 * scale)), scale);
        for (std::string& file : files) {
            file = std::filesystem::relative(file, world_ / "").string();
        }
        return files;
    }

    [[nodiscard]] std::string best(const std::string& name, double scale = 1) const {
        const auto files = found(theme(), name, scale);
        return files.empty() ? "" : files.front();
    }

    IconWorld world_;
};

using Strings = std::vector<std::string>;

TEST(IconThemeIndex, reads_what_a_subfolder_is_for) {
    const auto index = parseIconThemeIndex(
        "[Icon Theme]\nInherits=one, two,,three\nDirectories=48/apps,scalable/apps,48/apps,\n"
        "ScaledDirectories=48@2/apps\n"
        "[48/apps]\nSize=48\nType=Fixed\nContext=Applications\n"
        "[scalable/apps]\nSize=128\nMinSize=8\nMaxSize=512\nType=Scalable\n"
        "[48@2/apps]\nSize=48\nScale=2\nType=Threshold\nMinSize=1\n"
        "[unlisted]\nSize=48\n");
    EXPECT_EQ(index.inherits, (Strings{"one", "two", "three"}));
    const std::vector<IconSubfolder> expected = {{"48/apps", 48, 1, 48, 48, false},
                                                 {"scalable/apps", 128, 1, 8, 512, true},
                                                 {"48@2/apps", 48, 2, 48, 48, false}};
    EXPECT_EQ(index.subfolders, expected);
}

TEST(IconThemeIndex, leaves_out_what_makes_no_sense) {
    const auto index = parseIconThemeIndex(
        "[Icon Theme]\nDirectories=nosize,zero,negative,word,huge,missing,/etc,../out,a/../../b\n"
        "[nosize]\nType=Fixed\n[zero]\nSize=0\n[negative]\nSize=-4\n[word]\nSize=big\n"
        "[huge]\nSize=99999999999\n[/etc]\nSize=48\n[../out]\nSize=48\n[a/../../b]\nSize=48\n");
    EXPECT_TRUE(index.subfolders.empty());
    EXPECT_TRUE(parseIconThemeIndex("").subfolders.empty());
}

TEST(IconThemeIndex, is_bounded) {
    std::string list;
    std::string sections;
    for (int i = 0; i < 5000; ++i) {
        list += std::to_string(i) + ",";
        sections += "[" + std::to_string(i) + "]\nSize=48\n";
    }
    const auto index = parseIconThemeIndex("[Icon Theme]\nInherits=" + list +
                                           "\nDirectories=" + list + "\n" + sections);
    EXPECT_EQ(index.subfolders.size(), 4096U);
    EXPECT_EQ(index.inherits.size(), 64U);
}

TEST_F(IconThemeTest, the_best_size_is_chosen) {
    struct Case {
        const char* name;
        Strings subfolders;  // which of the theme's subfolders have the icon
        double scale;
        const char* best;
    };
    world_.addTheme("Main", {{"16", 16, ""},
                             {"48", 48, ""},
                             {"64", 64, "Type=Fixed\n"},
                             {"64x2", 64, "Type=Fixed\nScale=2\n"},
                             {"128", 128, "Type=Threshold\n"},
                             {"256", 256, ""},
                             {"scalable", 128, kScalable},
                             {"small", 16, "Type=Scalable\nMinSize=8\nMaxSize=32\n"}});
    const Case cases[] = {
        {"a drawing that may be that large", {"16", "128", "scalable.svg"}, 1, "scalable.svg"},
        {"else the smallest that is large enough", {"16", "48", "128", "256"}, 1, "128"},
        {"at scale 1.25", {"64", "128", "256"}, 1.25, "128"},
        {"at scale 1.5", {"64", "128", "256"}, 1.5, "128"},
        {"at scale 2", {"64", "128", "256"}, 2, "256"},
        {"at scale 3", {"64", "128", "256"}, 3, "256"},
        {"at scale 3 a drawing", {"256", "scalable.svg"}, 3, "scalable.svg"},
        {"else the largest", {"16", "48", "64"}, 1, "64"},
        {"a drawing for small sizes is one of the smaller ones", {"128", "small.svg"}, 1, "128"},
        {"but a better one than a smaller picture", {"48", "small.svg"}, 1, "small.svg"},
        {"a picture among drawings has one size", {"48", "scalable.png"}, 2, "scalable.png"},
        {"of two alike the one for this scale", {"64x2", "128"}, 1, "128"},
        {"of two alike the one for scale 2", {"128", "64x2"}, 1.5, "64x2"},
    };
    int number = 0;
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const std::string icon = "icon" + std::to_string(++number);
        const auto fileIn = [&](std::string where) {
            std::string ending = ".png";
            if (const std::size_t dot = where.find('.'); dot != std::string::npos) {
                ending = where.substr(dot);
                where.resize(dot);
            }
            return "system/icons/Main/" + where + "/" + icon + ending;
        };
        for (const std::string& where : row.subfolders) {
            put(fileIn(where));
        }
        EXPECT_EQ(best(icon, row.scale), fileIn(row.best));
    }
}

TEST_F(IconThemeTest, the_other_sizes_follow_as_second_best) {
    world_.addTheme("Main", {{"16", 16, ""},
                             {"48", 48, ""},
                             {"128", 128, ""},
                             {"256", 256, ""},
                             {"scalable", 128, kScalable}});
    for (const char* const where : {"16", "48", "128", "256"}) {
        put(std::string("system/icons/Main/") + where + "/a.png");
    }
    put("system/icons/Main/scalable/a.svgz");
    EXPECT_EQ(found(theme(), "a"),
              (Strings{"system/icons/Main/scalable/a.svgz", "system/icons/Main/128/a.png",
                       "system/icons/Main/256/a.png", "system/icons/Main/48/a.png",
                       "system/icons/Main/16/a.png"}));
}

TEST_F(IconThemeTest, the_formats_of_one_size_come_in_a_fixed_order) {
    world_.addTheme("Main", {{"128", 128, ""}});
    for (const char* const ending : {".xpm", ".svgz", ".png", ".svg", ".jpg", ".icon"}) {
        put(std::string("system/icons/Main/128/a") + ending);
    }
    EXPECT_EQ(found(theme(), "a"),
              (Strings{"system/icons/Main/128/a.png", "system/icons/Main/128/a.svg",
                       "system/icons/Main/128/a.svgz", "system/icons/Main/128/a.xpm"}));
}

TEST_F(IconThemeTest, parents_follow_in_depth_and_hicolor_stands_last) {
    world_.addTheme("Main", {{"a", 48, ""}}, "hicolor,Parent,Aunt");
    world_.addTheme("Parent", {{"a", 48, ""}}, "Grandparent");
    world_.addTheme("Grandparent", {{"a", 48, ""}}, "hicolor");
    world_.addTheme("Aunt", {{"a", 48, ""}});
    world_.addTheme("Spare", {{"a", 48, ""}});
    world_.addTheme("hicolor", {{"a", 48, ""}});
    const Strings order = {"Main", "Parent", "Grandparent", "Aunt", "Spare", "hicolor"};
    for (std::size_t i = 0; i < order.size(); ++i) {
        for (std::size_t j = i; j < order.size(); ++j) {
            put("system/icons/" + order[j] + "/a/icon" + std::to_string(i) + ".png");
        }
    }
    const IconTheme themes = theme("Main", "Spare");
    for (std::size_t i = 0; i < order.size(); ++i) {
        const std::string icon = "icon" + std::to_string(i);
        EXPECT_EQ(found(themes, icon), Strings{"system/icons/" + order[i] + "/a/" + icon + ".png"});
    }
}

TEST_F(IconThemeTest, themes_that_inherit_each_other_end) {
    world_.addTheme("Main", {{"a", 48, ""}}, "Other,Main");
    world_.addTheme("Other", {{"a", 48, ""}}, "Main,Other,hicolor,../../etc,.hidden,");
    put("system/icons/Other/a/x.png");
    EXPECT_EQ(best("x"), "system/icons/Other/a/x.png");
    EXPECT_EQ(best("nothing"), "");
}

TEST_F(IconThemeTest, a_theme_may_be_spread_over_several_folders) {
    world_.addTheme("Main", {{"48", 48, ""}, {"128", 128, ""}});
    put("system/icons/Main/48/both.png");
    put("system/icons/Main/128/both.png");
    put("user/icons/Main/48/mine.png");
    put("user/icons/Main/128/both.png");
    EXPECT_EQ(best("mine"), "user/icons/Main/48/mine.png");
    EXPECT_EQ(best("both"), "user/icons/Main/128/both.png") << "the user's own outranks";
}

TEST_F(IconThemeTest, hicolor_is_read_even_where_nothing_describes_it) {
    put("user/icons/hicolor/64x64/apps/a.png");
    put("user/icons/hicolor/scalable/apps/b.svg");
    EXPECT_EQ(best("a"), "user/icons/hicolor/64x64/apps/a.png");
    EXPECT_EQ(best("b"), "user/icons/hicolor/scalable/apps/b.svg");
}

TEST_F(IconThemeTest, loose_pictures_come_after_all_themes) {
    world_.addTheme("Main", {{"48", 48, ""}});
    put("system/icons/Main/48/themed.xpm");
    put("system/pixmaps/themed.png");
    put("system/pixmaps/loose.xpm");
    put("system/pixmaps/loose.png");
    put("user/icons/base.svg");
    EXPECT_EQ(best("themed"), "system/icons/Main/48/themed.xpm");
    EXPECT_EQ(found(theme(), "loose"),
              (Strings{"system/pixmaps/loose.png", "system/pixmaps/loose.xpm"}));
    EXPECT_EQ(best("base"), "user/icons/base.svg");
}

TEST_F(IconThemeTest, a_name_may_carry_its_ending) {
    world_.addTheme("Main", {{"48", 48, ""}});
    put("system/icons/Main/48/org.example.App.png");
    put("system/pixmaps/loose.xpm");
    put("system/pixmaps/loose.png");
    EXPECT_EQ(best("org.example.App"), "system/icons/Main/48/org.example.App.png");
    EXPECT_EQ(best("org.example.App.png"), "system/icons/Main/48/org.example.App.png");
    EXPECT_EQ(best("org.example.App.svg"), "system/icons/Main/48/org.example.App.png");
    EXPECT_EQ(best("loose.xpm"), "system/pixmaps/loose.xpm");
}

TEST_F(IconThemeTest, names_that_are_no_names_find_nothing) {
    world_.addTheme("Main", {{"48", 48, ""}});
    put("system/icons/Main/48/a.png");
    put("system/icons/Main/a.png");
    for (const std::string& name :
         {std::string(), std::string("../a"), std::string("48/a"), std::string("/a"),
          std::string("a\0b", 3), std::string("."), std::string(".."), std::string(".png"),
          std::string(5000, 'a')}) {
        EXPECT_EQ(found(theme(), name), Strings()) << name;
    }
}

TEST_F(IconThemeTest, a_symbolic_sibling_is_another_icon) {
    world_.addTheme("Main", {{"symbolic/apps", 16, kScalable}});
    put("system/icons/Main/symbolic/apps/a-symbolic.svg");
    EXPECT_EQ(best("a"), "");
    EXPECT_EQ(best("a-symbolic"), "system/icons/Main/symbolic/apps/a-symbolic.svg");
}

TEST_F(IconThemeTest, a_theme_that_is_not_installed_has_hicolor) {
    world_.addTheme("hicolor", {{"48", 48, ""}});
    put("system/icons/hicolor/48/a.png");
    EXPECT_EQ(found(theme("Gone", "Gone too"), "a"), Strings{"system/icons/hicolor/48/a.png"});
}

TEST_F(IconThemeTest, its_fingerprint_tells_what_came_and_went) {
    world_.addTheme("Main", {{"48", 48, ""}, {"64", 64, ""}});
    put("system/icons/Main/48/a.png");
    const auto first = theme().fingerprint();
    EXPECT_EQ(theme().fingerprint(), first);

    setDate(world_ / "system/icons/Main/48", 1'000'000'000);
    const auto touched = theme().fingerprint();
    EXPECT_NE(touched, first) << "a subfolder's date";
    put("system/icons/Main/64/a.png");
    const auto added = theme().fingerprint();
    EXPECT_NE(added, touched) << "a new subfolder";
    put("user/icons/Main/48/a.png");
    const auto spread = theme().fingerprint();
    EXPECT_NE(spread, added) << "another folder of the theme";
    put("system/pixmaps/x.png");
    EXPECT_NE(theme().fingerprint(), spread) << "a loose picture";
}

TEST_F(IconThemeTest, what_comes_later_is_seen_by_a_new_one) {
    world_.addTheme("Main", {{"48", 48, ""}});
    put("system/icons/Main/48/a.png");
    const IconTheme before = theme();
    EXPECT_EQ(found(before, "a").size(), 1U);
    put("system/icons/Main/48/b.png");
    EXPECT_EQ(found(theme(), "b").size(), 1U);
    std::filesystem::remove(world_ / "system/icons/Main/48/a.png");
    EXPECT_TRUE(found(before, "a").empty()) << "files that are gone are never named";
}

TEST_F(IconThemeTest, the_index_of_gtk_gives_the_same_answers) {
    world_.addTheme(
        "Main", {{"48/apps", 48, ""}, {"128/apps", 128, ""}, {"scalable/apps", 128, kScalable}});
    world_.addPng("system/icons/Main/48/apps/a.png", 48, 0xffff0000U);
    world_.addPng("system/icons/Main/128/apps/a.png", 128, 0xffff0000U);
    world_.addPng("system/icons/Main/48/apps/b.png", 48, 0xffff0000U);
    writeFile(world_ / "system/icons/Main/scalable/apps/c.svg", svgText(8, 8, 1));
    const IconTheme listed = theme();
    const std::string folder = world_ / "system/icons/Main";
    const std::string command = "gtk-update-icon-cache --quiet --force '" + folder + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    ASSERT_TRUE(std::filesystem::exists(folder + "/icon-theme.cache"));
    const IconTheme cached = theme();
    for (const char* const name : {"a", "b", "c", "d"}) {
        EXPECT_EQ(found(cached, name), found(listed, name)) << name;
    }

    // A file that is newer than the index, in folders with older dates: it is not found, because
    // the index is taken to be up to date and does not list it.
    put("system/icons/Main/48/apps/late.png");
    for (const char* const part : {"/48/apps", "/128/apps", "/scalable/apps", ""}) {
        setDate(folder + part, 1'000'000'000);
    }
    EXPECT_EQ(best("late"), "");
    EXPECT_EQ(best("a"), "system/icons/Main/128/apps/a.png");
    setDate(folder + "/icon-theme.cache", 999'999'999);
    EXPECT_EQ(best("late"), "system/icons/Main/48/apps/late.png") << "an old index counts no more";
}

TEST_F(IconThemeTest, a_broken_index_of_gtk_is_done_without) {
    world_.addTheme("Main", {{"48", 48, ""}});
    put("system/icons/Main/48/a.png");
    put("system/icons/Main/icon-theme.cache");
    EXPECT_EQ(best("a"), "system/icons/Main/48/a.png");
}

TEST_F(IconThemeTest, several_threads_may_look_at_once) {
    world_.addTheme("Main", {{"48", 48, ""}}, "Other");
    world_.addTheme("Other", {{"48", 48, ""}});
    for (int i = 0; i < 50; ++i) {
        put("system/icons/" + std::string(i % 2 == 0 ? "Main" : "Other") + "/48/" +
            std::to_string(i) + ".png");
    }
    const IconTheme themes = theme();
    std::array<int, 4> hits = {};
    {
        std::vector<std::jthread> threads;
        for (int& count : hits) {
            threads.emplace_back([&themes, &count] {
                for (int i = 0; i < 60; ++i) {
                    count += static_cast<int>(themes.files(std::to_string(i), 68, 1).size());
                }
            });
        }
    }
    EXPECT_EQ(hits, (std::array{50, 50, 50, 50}));
}

}  // namespace
}  // namespace tavo
