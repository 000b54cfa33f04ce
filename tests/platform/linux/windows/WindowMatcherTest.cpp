#include <gtest/gtest.h>

#include "platform/linux/windows/WindowMatcher.h"

namespace tavo {
namespace {

constexpr const char* kChrome = "google-chrome.desktop";
constexpr const char* kMail = "chrome-mail.desktop";

const std::vector<ListedEntry> kEntries = {
    {kChrome, "/a/google-chrome.desktop", "Google-chrome", "google-chrome-stable"},
    {kMail, "/a/chrome-mail.desktop", "crx_mail", "google-chrome-stable"},
    {"org.example.Editor.desktop", "/a/org.example.Editor.desktop", "", "editor"},
    {"org.example.Tool.desktop", "/a/org.example.Tool.desktop", "", "tool"},
    {"tool-settings.desktop", "/a/tool-settings.desktop", "", "tool"},
    {"org.example.View.desktop", "/a/org.example.View.desktop", "", "viewer"},
    {"view-settings.desktop", "/a/view-settings.desktop", "", "viewer"},
    {"named.desktop", "/a/named.desktop", "Stated", "named-program"},
    {"script.desktop", "/a/script.desktop", "", "python3.11"},
    {"one.desktop", "/a/one.desktop", "Shared", "one"},
    {"two.desktop", "/a/two.desktop", "shared", "two"},
    {"shared.desktop", "/a/shared.desktop", "", "shared-program"},
    {"kde-chess.desktop", "/a/kde/chess.desktop", "", ""},
};

struct Row {
    const char* name;
    WindowNames names;
    const char* launchedFrom;
    const char* asked;
    const char* owner;
};

const Row kRows[] = {
    {"the instance comes before the class", {"crx_mail", "Google-chrome", ""}, "", "", kMail},
    {"the class is the stated one", {"google-chrome (x)", "Google-chrome", ""}, "", "", kChrome},
    {"the application id is the stated one", {"", "", "stated"}, "", "", "named.desktop"},
    {"case does not count", {"", "GOOGLE-CHROME", ""}, "", "", kChrome},
    {"letters beyond ASCII are compared as they are", {"", "st\u00c4ted", ""}, "", "", ""},
    {"the instance is the id", {"kde-chess", "Chess", ""}, "", "", "kde-chess.desktop"},
    {"the class is the id", {"x", "Org.Example.Editor", ""}, "", "", "org.example.Editor.desktop"},
    {"the application id is the id",
     {"x", "X", "org.example.Tool"},
     "",
     "",
     "org.example.Tool.desktop"},
    {"a stated class is stronger than an id", {"named", "Google-chrome", ""}, "", "", kChrome},
    {"an id counts beside a stated class", {"named", "Named", ""}, "", "", "named.desktop"},
    {"a program that one entry has counts",
     {"editor", "Editor", ""},
     "",
     "",
     "org.example.Editor.desktop"},
    {"a program that two entries have does not", {"x", "Viewer", ""}, "", "", ""},
    {"unless one of them is called like it", {"x", "Tool", ""}, "", "", "org.example.Tool.desktop"},
    {"of them the one it was started from comes first",
     {"x", "Tool", ""},
     "tool-settings.desktop",
     "",
     "tool-settings.desktop"},
    {"nor that of an entry that states a class", {"named-program", "Y", ""}, "", "", ""},
    {"nor an interpreter", {"python3.11", "Python3.11", ""}, "", "", ""},
    {"part of a name is nothing", {"edit", "editor2", ""}, "", "", ""},
    {"an id with its suffix is not the id", {"kde-chess.desktop", "", ""}, "", "", ""},
    {"a nameless window is where its process was started from",
     {"", "", ""},
     "script.desktop",
     "",
     "script.desktop"},
    {"a foreign name, too", {"my-script", "My-script", ""}, "script.desktop", "", "script.desktop"},
    {"names are stronger than where it was started from",
     {"kde-chess", "", ""},
     "script.desktop",
     "",
     "kde-chess.desktop"},
    {"a window started from an unlisted entry has no owner", {"", "", ""}, "gone.desktop", "", ""},
    {"of two with one class the one it was started from",
     {"Shared", "", ""},
     "two.desktop",
     "",
     "two.desktop"},
    {"of two with one class the one whose id the window has, too",
     {"one", "Shared", ""},
     "",
     "",
     "one.desktop"},
    {"of two with one class neither without a reason", {"x", "Shared", ""}, "", "", ""},
    {"nor a third one with a weaker reason", {"shared", "x", ""}, "script.desktop", "", ""},
    {"the asked-for bundle has its identifier",
     {"x", "org.example.Bundle", ""},
     "",
     "org.example.Bundle",
     "org.example.Bundle"},
    {"and what was started as it",
     {"x", "y", ""},
     "org.example.Bundle",
     "org.example.Bundle",
     "org.example.Bundle"},
    {"an unlisted entry has its id", {"x", "Gone", ""}, "", "gone.desktop", "gone.desktop"},
    {"but a listed one with a stronger reason wins",
     {"gone", "Google-chrome", ""},
     "",
     "gone.desktop",
     kChrome},
    {"and one with the same reason leaves it without an owner",
     {"kde-chess", "", ""},
     "",
     "KDE-chess.desktop",
     ""},
    {"nothing is nothing", {"", "", ""}, "", "", ""},
};

WindowMatcher matcherOf(const DesktopEntryIndex::Entries& entries) {
    return WindowMatcher(std::make_shared<const DesktopEntryIndex::Entries>(entries));
}

TEST(WindowMatcher, a_window_belongs_to_the_entry_with_the_strongest_reason) {
    const WindowMatcher matcher = matcherOf(kEntries);
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(matcher.owner(
                      row.names, [&] { return std::string(row.launchedFrom); }, row.asked),
                  row.owner);
    }
}

TEST(WindowMatcher, the_process_is_not_looked_at_where_the_names_decide) {
    const WindowMatcher matcher = matcherOf(kEntries);
    bool asked = false;
    const auto note = [&] {
        asked = true;
        return std::string();
    };
    EXPECT_EQ(matcher.owner({"", "Google-chrome", ""}, note), kChrome);
    EXPECT_FALSE(asked);
    EXPECT_EQ(matcher.owner({"", "unknown", ""}, note), "");
    EXPECT_TRUE(asked);
}

TEST(WindowMatcher, a_listed_file_tells_its_identifier) {
    const WindowMatcher matcher = matcherOf(kEntries);
    EXPECT_EQ(matcher.identifierAt("/a/kde/chess.desktop"), "kde-chess.desktop");
    EXPECT_EQ(matcher.identifierAt("/b/kde/chess.desktop"), "");
    EXPECT_EQ(matcher.identifierAt(""), "");
}

TEST(WindowMatcher, without_listed_entries_no_window_has_an_owner) {
    EXPECT_EQ(matcherOf({}).owner({"a", "b", "c"}, nullptr), "");
    EXPECT_EQ(matcherOf({}).owner({"", "", ""}, nullptr, ".desktop"), "");
}

TEST(LatestWindowMatcher, the_latest_list_holds_and_is_indexed_once) {
    const auto listed = std::make_shared<DesktopEntryIndex>();
    LatestWindowMatcher latest(listed);
    EXPECT_EQ(latest.get().identifierAt("/a/one.desktop"), "");
    listed->replace(kEntries);
    const WindowMatcher* const first = &latest.get();
    EXPECT_EQ(first->identifierAt("/a/one.desktop"), "one.desktop");
    EXPECT_EQ(&latest.get(), first);
    listed->replace({});
    EXPECT_EQ(latest.get().identifierAt("/a/one.desktop"), "");
}

TEST(GenericPrograms, interpreters_shells_wrappers_and_terminals_are_generic) {
    for (const char* const name :
         {"sh", "bash", "Python", "python3", "python3.11", "perl5.36.0", "env", "flatpak", "snap",
          "xterm", "XTerm", "xfce4-terminal", "gnome-terminal", "wine", "java", "st"}) {
        EXPECT_TRUE(isGenericProgram(name)) << name;
    }
    for (const char* const name : {"", "7", "gimp-2.10", "editor", "shotwell", "pythonista",
                                   "bashtop", "stellarium", "xterminal", "0ad"}) {
        EXPECT_FALSE(isGenericProgram(name)) << name;
    }
}

}  // namespace
}  // namespace tavo
