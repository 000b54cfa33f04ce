#include <fcntl.h>
#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/entries/DesktopEntry.h"
#include "platform/posix/FileDescriptor.h"
#include "tests/platform/linux/fixtures/EntryTree.h"

namespace tavo {
namespace {

const std::vector<std::string> kLanguages = {"it_IT", "it", "C"};

std::optional<DesktopEntry> parse(std::string_view bytes) {
    return parseDesktopEntry(bytes, kLanguages);
}

// The bytes of a string literal, which may contain NULs.
template<std::size_t N>
std::string bytesOf(const char (&literal)[N]) {
    return std::string(literal, N - 1);
}

TEST(DesktopEntry, reads_every_key_that_matters) {
    const auto entry = parse(
        "# made by hand\n"
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Editor\n"
        "Icon=editor\n"
        "Exec=editor %F\n"
        "TryExec=/usr/bin/editor\n"
        "Path=/srv/texts\n"
        "StartupWMClass=Editor\n"
        "OnlyShowIn=GNOME;XFCE;\n"
        "NotShowIn=KDE;\n"
        "Hidden=true\n"
        "NoDisplay=true\n"
        "Terminal=true\n"
        "StartupNotify=true\n"
        "DBusActivatable=true\n"
        "SingleMainWindow=true\n"
        "Categories=Utility;\n"
        "\n"
        "[Desktop Action new]\n"
        "Name=New\n"
        "Exec=editor --new\n");
    ASSERT_TRUE(entry);
    DesktopEntry expected;
    expected.type = "Application";
    expected.name = "Editor";
    expected.icon = "editor";
    expected.exec = "editor %F";
    expected.tryExec = "/usr/bin/editor";
    expected.path = "/srv/texts";
    expected.startupWmClass = "Editor";
    expected.onlyShowIn = {"GNOME", "XFCE"};
    expected.notShowIn = {"KDE"};
    expected.hidden = expected.noDisplay = expected.terminal = true;
    expected.startupNotify = expected.dbusActivatable = expected.singleMainWindow = true;
    EXPECT_EQ(*entry, expected);
}

TEST(DesktopEntry, absent_keys_are_empty_or_false) {
    const auto entry = parse("[Desktop Entry]\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(*entry, DesktopEntry());
    EXPECT_EQ(entry->onlyShowIn, std::nullopt);
}

TEST(DesktopEntry, one_ill_formed_line_anywhere_makes_it_no_entry) {
    struct Row {
        const char* name;
        std::string bytes;
        bool wellFormed;
    };
    const std::string head = "[Desktop Entry]\nName=A\n";
    const std::vector<Row> rows = {
        {"nothing", "", false},
        {"only line breaks", "\n\n", false},
        {"only comments", "# a\n", false},
        {"comments and blank lines first", "# a\n\n \t\n[Desktop Entry]\n", true},
        {"no line break at the end", "[Desktop Entry]\nName=A", true},
        {"carriage returns", "[Desktop Entry]\r\nName=A\r\n", true},
        {"blanks before a group and a key", "  [Desktop Entry]\n\tName=A\n", true},
        {"blanks after a group", "[Desktop Entry] \t\n", true},
        {"a byte order mark", "\xef\xbb\xbf[Desktop Entry]\n", false},
        {"another group first", "[Other]\n[Desktop Entry]\nName=A\n", false},
        {"a key before any group", "Name=A\n[Desktop Entry]\n", false},
        {"another case of the group", "[desktop entry]\n", false},
        {"text after a group", "[Desktop Entry]x\n", false},
        {"a line without a sign", head + "garbage\n", false},
        {"such a line in a later group", head + "[Other]\ngarbage\n", false},
        {"no key before the sign", head + "=x\n", false},
        {"an open group", head + "[Other\n", false},
        {"an empty group name", head + "[]\n", false},
        {"a bracket in a group name", head + "[a[b]\n", false},
        {"a control character in a group name", head + "[a\tb]\n", false},
        {"a group name that is not UTF-8", head + "[\xe9]\n", true},
        {"a stray byte after a group", "[Desktop Entry]\x80 \x80\n", true},
        {"a NUL after a group", bytesOf("[Desktop Entry]\0garbage\n"), true},
        {"a NUL and another bracket after a group", bytesOf("[Desktop Entry]\0]\n"), false},
        {"a NUL in a group name", head + bytesOf("[a\0]\n"), false},
        {"blanks around the sign", head + "Exec \t=  a\n", true},
        {"a blank inside a key", head + "E xec=a\n", true},
        {"a key that is not UTF-8", head + "\xe9=a\n", true},
        {"an open locale", head + "Name[it=a\n", false},
        {"text after a locale", head + "Name[it]x=a\n", false},
        {"a blank in a locale", head + "Name[i t]=a\n", false},
        {"a blank before a locale", head + "Name [it]=a\n", false},
        {"a closing bracket alone", head + "Name]=a\n", false},
        {"only a locale", head + "[it]=a\n", false},
        {"an empty locale", head + "Name[]=a\n", true},
        {"a locale with a modifier", head + "Name[sr_RS.UTF-8@latin]=a\n", true},
        {"a letter beyond ASCII in a locale", head + "Name[\xc3\xa9]=a\n", true},
        {"a locale that is not UTF-8", head + "Name[\xe9]=a\n", false},
        {"the encoding", head + "Encoding=utf-8\n", true},
        {"another encoding", head + "Encoding=Legacy-Mixed\n", false},
        {"another encoding in a later group", head + "[Other]\nEncoding=x\n", true},
        {"a NUL in a value", head + bytesOf("Exec=a\0b\n"), true},
        {"a NUL at the start of a line", head + bytesOf("\0garbage\n"), true},
        {"a NUL in a key", head + bytesOf("Ex\0ec=a\n"), false},
        {"a program",
         bytesOf("\x7f"
                 "ELF\x02\x01\x01\0\0\0\n\0"),
         false},
        {"the largest file", head + "#" + std::string(kLargestDesktopEntry - head.size() - 1, 'x'),
         true},
        {"a larger file", head + "#" + std::string(kLargestDesktopEntry - head.size(), 'x'), false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parse(row.bytes).has_value(), row.wellFormed);
    }
}

TEST(DesktopEntry, the_name_is_the_best_translation) {
    struct Row {
        const char* name;
        std::string lines;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {"no name", "Exec=a\n", ""},
        {"only the plain name", "Name=Files\n", "Files"},
        {"the language", "Name=Files\nName[it]=File\n", "File"},
        {"language and country before language", "Name[it_IT]=A\nName[it]=B\nName=C\n", "A"},
        {"their order does not matter", "Name[it]=B\nName=C\nName[it_IT]=A\n", "A"},
        {"another language", "Name=Files\nName[de]=Dateien\n", "Files"},
        {"another country", "Name=Files\nName[it_CH]=X\n", "Files"},
        {"the language C before the plain name", "Name=Files\nName[C]=C\n", "C"},
        {"another case of the language", "Name=Files\nName[IT]=X\n", "Files"},
        {"no plain name", "Name[it]=File\n", "File"},
        {"neither is in the user's language", "Name[de]=Dateien\n", ""},
        {"the last of repeated keys", "Name=A\nName=B\nName[it]=C\nName[it]=D\n", "D"},
        {"an empty translation is passed over", "Name=Files\nName[it]=\n", "Files"},
        {"an ill-formed translation is passed over", "Name=Files\nName[it]=Caff\xe8\n", "Files"},
        {"an ill-formed name is repaired", "Name=Caff\xe8\n", "Caff\xef\xbf\xbd"},
        {"an ill-formed part counts once", "Name=A\xe2\x82Z\n", "A\xef\xbf\xbdZ"},
        {"not when there is a translation", "Name=Caff\xe8\nName[it]=Bar\n", "Bar"},
        {"the name of another group", "Name=A\n[Desktop Action x]\nName=B\n", "A"},
        {"a group that comes again", "Name=A\n[X]\nName=B\n[Desktop Entry]\nName=C\n", "C"},
        {"blanks around the sign", "Name \t=  A\n", "A"},
        {"blanks at the end stay", "Name=A \t\n", "A \t"},
        {"escapes", "Name=\\sa\\sb\\tc\\nd\\re\\\\f\n", " a b\tc\nd\re\\f"},
        {"unknown escapes stay", "Name=a\\qb\\;c\n", "a\\qb\\;c"},
        {"a backslash at the end goes", "Name=a\\\n", "a"},
        {"a semicolon is plain", "Name=a;b\n", "a;b"},
        {"an equals sign is plain", "Name=a=b\n", "a=b"},
        {"markup", "Name=<b>A</b> &amp;\n", "<b>A</b> &amp;"},
        {"control characters",
         "Name=\x01"
         "A\x7f\n",
         "\x01"
         "A\x7f"},
        {"a right-to-left mark",
         "Name=\xe2\x80\xae"
         "A\n",
         "\xe2\x80\xae"
         "A"},
        {"a carriage return that ends no line", "Name=A\rB\n", "A\rB"},
        {"a carriage return without a line break", "Name=A\r", "A\r"},
        {"what follows a NUL", bytesOf("Name=A\0B\n"), "A"},
        {"ten thousand characters", "Name=" + std::string(10000, 'x') + '\n',
         std::string(10000, 'x')},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = parse("[Desktop Entry]\n" + row.lines);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->name, row.expected);
    }
}

TEST(DesktopEntry, the_icon_is_localized_as_the_name_is) {
    struct Row {
        const char* name;
        std::string lines;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {"none", "Name=x\n", ""},
        {"empty", "Icon=\n", ""},
        {"plain", "Icon=terminal\n", "terminal"},
        {"the language", "Icon=flag\nIcon[it]=flag-it\nIcon[de]=flag-de\n", "flag-it"},
        {"another language", "Icon=flag\nIcon[de]=flag-de\n", "flag"},
        {"an action's is not meant", "Icon=yes\n[Desktop Action New]\nIcon=no\n", "yes"},
        {"escapes", "Icon=/opt/a\\sb\\\\c.png\n", "/opt/a b\\c.png"},
        {"not UTF-8", "Icon=caff\xe8\n", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = parse("[Desktop Entry]\n" + row.lines);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->icon, row.expected);
    }
}

TEST(DesktopEntry, other_keys_have_no_translations) {
    const auto entry = parse("[Desktop Entry]\nExec=a\nExec[it]=b\nHidden[it]=true\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->exec, "a");
    EXPECT_FALSE(entry->hidden);
}

TEST(DesktopEntry, a_string_that_is_not_utf8_is_absent) {
    const auto entry = parse("[Desktop Entry]\nExec=caff\xe8\nTryExec=a\\sb\nType=\xff\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->exec, "");
    EXPECT_EQ(entry->tryExec, "a b");
    EXPECT_EQ(entry->type, "");
}

TEST(DesktopEntry, only_true_and_1_are_true) {
    struct Row {
        const char* value;
        bool expected;
    };
    const std::vector<Row> rows = {
        {"true", true},   {"1", true},      {"true \t", true}, {"  true", true},
        {"1 ", true},     {"false", false}, {"0", false},      {"", false},
        {"True", false},  {"TRUE", false},  {"yes", false},    {"truex", false},
        {"true;", false}, {"10", false},    {"tru\\e", false}, {"\\strue", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value);
        const auto entry = parse(std::string("[Desktop Entry]\nNoDisplay=") + row.value + '\n');
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->noDisplay, row.expected);
    }
}

TEST(DesktopEntry, a_list_that_is_empty_is_not_absent) {
    using List = std::optional<std::vector<std::string>>;
    struct Row {
        const char* name;
        std::string lines;
        List expected;
    };
    const std::vector<Row> rows = {
        {"absent", "", std::nullopt},
        {"empty", "OnlyShowIn=\n", List(std::in_place)},
        {"one", "OnlyShowIn=KDE;\n", List({"KDE"})},
        {"without the last semicolon", "OnlyShowIn=KDE;GNOME\n", List({"KDE", "GNOME"})},
        {"a semicolon alone", "OnlyShowIn=;\n", List({""})},
        {"empty ones in between", "OnlyShowIn=KDE;;GNOME\n", List({"KDE", "", "GNOME"})},
        {"blanks belong to a name", "OnlyShowIn=KDE ; GNOME\n", List({"KDE ", " GNOME"})},
        {"an escaped semicolon", "OnlyShowIn=K\\;DE;\n", List({"K;DE"})},
        {"other escapes", "OnlyShowIn=K\\sDE\\\\;\n", List({"K DE\\"})},
        {"an unknown escape", "OnlyShowIn=KDE;\\q\n", std::nullopt},
        {"a backslash at the end", "OnlyShowIn=KDE\\\n", std::nullopt},
        {"not UTF-8", "OnlyShowIn=KDE;\xe9;\n", std::nullopt},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = parse("[Desktop Entry]\n" + row.lines);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->onlyShowIn, row.expected);
    }
}

TEST(DesktopEntry, is_read_from_a_path_or_from_an_open_folder) {
    const EntryTree tree;
    const std::string path =
        tree.write("folder/a", entryText("Long", "Name[it]=Lungo\n" + std::string(100000, '\n')));
    const FileDescriptor folder(
        open(tree.path("folder").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (const auto& entry :
         {readDesktopEntry(path, kLanguages), readDesktopEntry(folder.get(), "a", kLanguages)}) {
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->name, "Lungo");
    }
    EXPECT_FALSE(readDesktopEntry(folder.get(), "missing", kLanguages));
}

TEST(DesktopEntry, what_is_no_regular_file_is_no_entry) {
    const EntryTree tree;
    tree.makeFolder("folder");
    ASSERT_EQ(mkfifo(tree.path("fifo").c_str(), 0644), 0);
    tree.link("zero", "/dev/zero");
    tree.link("dangling", "nothing");
    tree.link("circle", "circle");
    tree.write("large", entryText("Large", std::string(10'000'000, '\n')));
    for (const char* const name :
         {"folder", "fifo", "zero", "dangling", "circle", "large", "missing"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readDesktopEntry(tree.path(name), kLanguages), std::nullopt);
    }
}

TEST(DesktopEntry, follows_a_symbolic_link_to_an_entry) {
    const EntryTree tree;
    tree.write("entry", entryText("A"));
    tree.link("link", "entry");
    const auto entry = readDesktopEntry(tree.path("link"), kLanguages);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, "A");
}

}  // namespace
}  // namespace tavo
