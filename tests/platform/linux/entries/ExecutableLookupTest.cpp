#include <optional>

#include <gtest/gtest.h>

#include "platform/linux/entries/ExecutableLookup.h"
#include "tests/platform/linux/fixtures/EntryTree.h"
#include "tests/platform/linux/fixtures/OrdinaryUser.h"

namespace tavo {
namespace {

TEST(ProgramOf, is_the_first_word_unquoted_as_a_shell_would) {
    struct Row {
        const char* name;
        std::string exec;
        std::optional<std::string> expected;
    };
    const std::vector<Row> rows = {
        {"a word alone", "vi", "vi"},
        {"arguments", "vi --clean %U", "vi"},
        {"blanks before it", " \tvi\t%U", "vi"},
        {"a path", "/opt/My/bin/vi %f", "/opt/My/bin/vi"},
        {"double quotes", "\"/opt/My Editor/vi\" %f", "/opt/My Editor/vi"},
        {"single quotes", "'/opt/My Editor/vi' %f", "/opt/My Editor/vi"},
        {"quotes inside a word", "v\"i\" x", "vi"},
        {"an escaped blank", "My\\ Editor x", "My Editor"},
        {"an escaped quote", "\"a\\\"b\" x", "a\"b"},
        {"shell operators are plain", "vi;ls && x", "vi;ls"},
        {"an empty word", "\"\" x", ""},
        {"a line break ends a word", "vi\nls", "vi"},
        {"a number sign inside a word", "vi#1 x", "vi#1"},
        {"nothing", "", std::nullopt},
        {"only blanks", " \t ", std::nullopt},
        {"only a comment", "# vi", std::nullopt},
        {"an open double quote", "vi \"x", std::nullopt},
        {"an open single quote", "vi it's", std::nullopt},
        {"a backslash at the end", "vi \\", std::nullopt},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(programOf(row.exec), row.expected);
    }
}

using State = ExecutableMatch::State;

class ExecutableLookupTest : public testing::Test {
protected:
    EntryTree tree_;
};

TEST_F(ExecutableLookupTest, finds_what_can_be_run) {
    tree_.write("bin/data", "");
    tree_.makeFolder("bin/folder");
    tree_.makeProgram("bin2/other");
    tree_.link("bin2/linked", tree_.path("bin/program"));
    tree_.link("bin2/dangling", "nothing");
    tree_.write("bin/twice", "");
    tree_.makeProgram("bin2/twice");
    tree_.makeProgram("bin/sub/inner");
    struct Row {
        const char* name;
        std::string program;
        bool expected;
    };
    const std::vector<Row> rows = {
        {"in the first folder", "program", true},
        {"in a later folder", "other", true},
        {"through a symbolic link", "linked", true},
        {"in the first folder again", "program", true},
        {"in a later folder, not executable in the first", "twice", true},
        {"nowhere", "missing", false},
        {"not executable", "data", false},
        {"a folder", "folder", false},
        {"a dangling link", "dangling", false},
        {"an absolute path", tree_.path("bin2/other"), true},
        {"an absolute path to nothing", tree_.path("bin2/program"), false},
        {"an absolute path to a folder", tree_.path("bin/folder"), false},
        {"a path is not looked for along the search path", "sub/inner", false},
        {"the empty name", "", false},
    };
    ExecutableLookup search(tree_.path("nothing") + ':' + tree_.path("bin") + ':' +
                            tree_.path("bin2"));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(search.finds(row.program), row.expected);
        EXPECT_EQ(search.finds(row.program), row.expected) << "the second time";
        EXPECT_EQ(search.find(row.program).state == State::executable, row.expected);
    }
}

TEST_F(ExecutableLookupTest, folders_that_are_not_absolute_do_not_count) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(tree_.path("bin"));
    const std::string elsewhere = tree_.path("nothing");
    for (const std::string& path : {elsewhere, ':' + elsewhere, elsewhere + "::" + elsewhere,
                                    elsewhere + ':', std::string("."), std::string("../bin")}) {
        SCOPED_TRACE(path);
        ExecutableLookup lookup(path);
        EXPECT_FALSE(lookup.finds("program"));
        EXPECT_EQ(lookup.find("program").state, State::missing);
    }
    std::filesystem::current_path(before);
}

TEST_F(ExecutableLookupTest, without_a_search_path_the_systems_folders_are_searched) {
    EXPECT_TRUE(ExecutableLookup("").finds("env"));
    EXPECT_EQ(ExecutableLookup("").find("env").path, "/usr/bin/env");
    EXPECT_NE(ExecutableLookup("").searchPath(), "");
}

TEST_F(ExecutableLookupTest, a_relative_path_counts_from_the_entrys_working_folder) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(tree_.path("bin"));
    ExecutableLookup lookup(tree_.path("bin"));
    EXPECT_FALSE(lookup.finds("./program"));
    EXPECT_TRUE(lookup.finds("./program", tree_.path("bin")));
    tree_.makeProgram("work/inner/tool");
    EXPECT_TRUE(lookup.finds("inner/tool", tree_.path("work")));
    EXPECT_FALSE(lookup.finds("inner/tool", tree_.path("bin")));
    EXPECT_EQ(lookup.find("inner/tool", tree_.path("work")).path, tree_.path("work/inner/tool"));
    EXPECT_EQ(lookup.find("./program").state, State::missing);
    std::filesystem::current_path(before);
}

TEST_F(ExecutableLookupTest, tells_what_stands_in_the_place_of_a_program) {
    tree_.write("bin/data", "");
    tree_.makeFolder("bin/folder");
    tree_.makeFolder("bin/data2");
    tree_.write("bin2/data2", "");
    tree_.makeProgram("closed/program");
    std::filesystem::permissions(tree_.path("closed"), std::filesystem::perms::none);
    const ExecutableLookup lookup(tree_.path("bin") + ':' + tree_.path("bin2"));
    struct Row {
        const char* name;
        std::string program;
        State state;
        std::string path;
    };
    const std::vector<Row> rows = {
        {"a program", "program", State::executable, tree_.path("bin/program")},
        {"nothing", "missing", State::missing, ""},
        {"nothing at a path", tree_.path("bin/missing"), State::missing, ""},
        {"a file", "data", State::notExecutable, tree_.path("bin/data")},
        {"a folder", "folder", State::folder, tree_.path("bin/folder")},
        {"a folder and then a file", "data2", State::notExecutable, tree_.path("bin2/data2")},
        {"in a closed folder", tree_.path("closed/program"), State::unreachable,
         tree_.path("closed/program")},
    };
    {
        const OrdinaryUser user;
        ASSERT_TRUE(user.succeeded());
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name);
            const ExecutableMatch match = lookup.find(row.program);
            EXPECT_EQ(match.state, row.state);
            EXPECT_EQ(match.path, row.path);
        }
    }
    std::filesystem::permissions(tree_.path("closed"), std::filesystem::perms::owner_all);
}

TEST_F(ExecutableLookupTest, an_answer_holds_for_the_life_of_the_search) {
    ExecutableLookup search(tree_.path("bin"));
    EXPECT_TRUE(search.finds("program"));
    EXPECT_FALSE(search.finds("late"));
    tree_.remove("bin/program");
    tree_.makeProgram("bin/late");
    EXPECT_TRUE(search.finds("program"));
    EXPECT_FALSE(search.finds("late"));
}

}  // namespace
}  // namespace tavo
