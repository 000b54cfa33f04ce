// Compares the words that an Exec key comes to with those with which GIO starts the same entry.
#include <random>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/opening/ExecKey.h"
#include "tests/platform/linux/fixtures/OpeningFixture.h"

namespace tavo {
namespace {

using processes::Folder;
using processes::kPatience;
using Words = std::vector<std::string>;

class ExecKey : public testing::Test {
protected:
    ExecKey() {
        EXPECT_EQ(::mkfifo(folder_.path("words").c_str(), 0600), 0);
        pipe_ = FileDescriptor(::open(folder_.path("words").c_str(), O_RDWR | O_CLOEXEC));
    }

    // Writes a desktop entry with this command, whose program reports the words that it gets.
    std::string entry(const std::string& arguments) const {
        std::string escaped;
        for (const char c : program_ + ' ' + arguments) {
            escaped += c == '\\' ? "\\\\" : std::string(1, c);
        }
        return folder_.write(
            "it's \"here\" $x.desktop",
            "[Desktop Entry]\nType=Application\nName=\"Plain\" $name\nName[it]=L'app \"è\" `$x`\n"
            "Icon=an icon\nIcon[it]=l'icona\nExec=" +
                escaped + '\n');
    }

    static Words ours(const std::string& path, const std::string& address = {}) {
        const auto entry = readDesktopEntry(path, messageLanguages());
        return entry ? commandWords(*entry, path, address) : Words{"(no entry)"};
    }

    // The words with which GIO starts the program; empty when GIO does not start it.
    Words gios(const std::string& path) {
        GDesktopAppInfo* const info = g_desktop_app_info_new_from_filename(path.c_str());
        if (info == nullptr) {
            return {};
        }
        const gboolean started =
            g_desktop_app_info_launch_uris_as_manager(info, nullptr, nullptr, G_SPAWN_SEARCH_PATH,
                                                      nullptr, nullptr, nullptr, nullptr, nullptr);
        g_object_unref(info);
        return started != FALSE ? reportedWords() : Words();
    }

    // Waits for the next started program. Returns its path and the arguments that it reports.
    Words reportedWords() {
        Words words = {program_};
        std::string word;
        for (;;) {
            pollfd wanted = {pipe_.get(), POLLIN, 0};
            const auto patience =
                std::chrono::duration_cast<std::chrono::milliseconds>(kPatience).count();
            char c = 0;
            if (::poll(&wanted, 1, static_cast<int>(patience)) <= 0 ||
                ::read(pipe_.get(), &c, 1) != 1) {
                return {"(no report)"};
            }
            if (c != '\0') {
                word += c;
            } else if (word == "(end)") {
                return words;
            } else {
                words.push_back(std::exchange(word, {}));
            }
        }
    }

    Folder folder_;
    FileDescriptor pipe_;
    const std::string program_ =
        folder_.script("program", "printf '%s\\0' \"$@\" '(end)' >" + folder_.path("words"));
    const processes::Variable locale_{"LC_ALL", "C.UTF-8"};
};

TEST_F(ExecKey, gives_the_words_that_gio_gives) {
    for (const char* const language : {"it", "C"}) {
        const processes::Variable variable("LANGUAGE", language);
        for (const char* const arguments : {"",
                                            "%f",
                                            "%F",
                                            "%u",
                                            "%U",
                                            "%i",
                                            "%c",
                                            "%k",
                                            "%%",
                                            "%f %u %i %c %k",
                                            "--name=%c",
                                            "a%ib",
                                            "%d%D%n%N%v%m",
                                            "%z a%zb",
                                            "100%%",
                                            "%%c",
                                            "%%%c",
                                            "%",
                                            "a %",
                                            "\"%f\" end",
                                            "\"two words\"",
                                            "'two words'",
                                            "a\\ b",
                                            "\"a \\\" \\$b \\` \\\\\"",
                                            "'a \\ b'",
                                            "\"\"",
                                            "''",
                                            "a\"b c\"d",
                                            "$HOME ~ * ; | & > <",
                                            "# comment %c",
                                            "a#b",
                                            "a #b %c",
                                            "\\%%",
                                            "'",
                                            "\"",
                                            "\\",
                                            "\"%c",
                                            "it's %c"}) {
            SCOPED_TRACE(arguments);
            const std::string path = entry(arguments);
            EXPECT_EQ(ours(path), gios(path));
        }
    }
}

TEST_F(ExecKey, gives_the_words_that_gio_gives_for_generated_commands) {
    const processes::Variable variable("LANGUAGE", "it");
    const std::vector<std::string> pieces = {
        "%f",   "%F",  "%u",  "%U",   "%i",           "%c",       "%k",        "%%", "%d",
        "%D",   "%n",  "%N",  "%v",   "%m",           "%q",       " ",         " ",  " ",
        "word", "--x", "=",   "\\ ",  "\\\\",         "\\\"",     "\\'",       "è",  "$x",
        "`",    "*",   "a#b", "\"\"", "\"b \\\" c\"", "'d \" e'", "\"' \\$\"", "~",  "%%%%"};
    std::mt19937 random(20240607);
    for (int i = 0; i < 200; ++i) {
        std::string arguments;
        for (unsigned left = 1 + random() % 8; left > 0; --left) {
            arguments += pieces[random() % pieces.size()];
        }
        SCOPED_TRACE(arguments);
        const std::string path = entry(arguments);
        EXPECT_EQ(ours(path), gios(path));
    }
}

// Not compared with GIO, which would add quotation marks of its own here.
TEST_F(ExecKey, gives_texts_in_quotes_as_they_are_and_whole) {
    const processes::Variable variable("LANGUAGE", "it");
    const std::string name = "L'app \"è\" `$x`";
    const std::string path = entry("");
    struct Row {
        const char* arguments;
        Words words;
    };
    for (const Row& row : {Row{"\"%c\"", {name}},
                           {"'%c'", {name}},
                           {"\"--name=%c!\" end", {"--name=" + name + "!", "end"}},
                           {"\"a 'b' %c\"", {"a 'b' " + name}},
                           {"'a \"b\" %c'", {"a \"b\" " + name}},
                           {"\"\\\"%c\\\"\"", {"\"" + name + "\""}},
                           {"\\\"%c\\\"", {"\"" + name + "\""}},
                           {"\"%k\"", {path}},
                           {"\"%i\"", {"--icon l'icona"}}}) {
        SCOPED_TRACE(row.arguments);
        entry(row.arguments);
        Words wanted = {program_};
        wanted.insert(wanted.end(), row.words.begin(), row.words.end());
        EXPECT_EQ(ours(path), wanted);
    }
}

TEST_F(ExecKey, gives_a_web_address_where_the_command_has_a_place_for_it) {
    const std::string address = "https://example.org/?a='b'&c=%20\"$d\"";
    for (const char* const arguments : {"%u", "%U", "\"%u\"", "'%U'"}) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(ours(entry(arguments), address), (Words{program_, address}));
    }
    EXPECT_EQ(ours(entry("--new %f"), address), (Words{program_, "--new"}));
}

TEST(CommandWords, are_none_where_the_command_cannot_be_split) {
    DesktopEntry entry;
    for (const char* const command : {"", " ", "a \"b", "a 'b", "# a"}) {
        SCOPED_TRACE(command);
        entry.exec = command;
        EXPECT_EQ(commandWords(entry, "/a.desktop", ""), Words());
    }
}

}  // namespace
}  // namespace tavo
