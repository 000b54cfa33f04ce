// What the command of an entry comes to, started plainly and in a terminal.
#include "tests/platform/linux/fixtures/OpeningFixture.h"

namespace tavo {
namespace {

using processes::OpeningTest;

struct Code {
    const char* name;
    const char* command;    // what comes after the program in Exec
    const char* arguments;  // as the program gets them; @ stands for the entry's path
};

class ExecKeyOpening : public OpeningTest,
                       public testing::WithParamInterface<std::tuple<bool, Code>> {
protected:
    void SetUp() override {
        if (std::get<bool>(GetParam())) {
            folder_.script("bin/xdg-terminal-exec", "exec \"$@\"");
            path_.emplace("PATH", folder_.path("bin") + ":/usr/bin:/bin");
            lines_ = "Terminal=true\n";
        }
    }

    std::optional<processes::Variable> path_;
    std::string lines_;
    const processes::Variable language_{"LANGUAGE", "it"};
    const processes::Variable locale_{"LC_ALL", "C.UTF-8"};
};

TEST_P(ExecKeyOpening, reaches_the_program_with_its_field_codes_filled_in) {
    const Code& code = std::get<Code>(GetParam());
    const std::string program =
        folder_.script("program", "{ printf '[%s]' \"$@\"; echo; } >" + folder_.path("arguments") +
                                      "; echo done >" + report_.path());
    const std::string path = entry("Name[it]=Il nome\nIcon=an icon\nIcon[it]=l’icona\n" + lines_ +
                                       "Exec=" + program + " " + code.command + "\n",
                                   "it's \"here\".desktop");
    EXPECT_EQ(open(path).text(), "(no error)");
    ASSERT_EQ(reported(), "done");
    std::ifstream file(folder_.path("arguments"));
    std::string arguments;
    std::getline(file, arguments);
    std::string wanted = code.arguments;
    if (const std::size_t at = wanted.find('@'); at != std::string::npos) {
        wanted.replace(at, 1, path);
    }
    EXPECT_EQ(arguments, wanted);
}

INSTANTIATE_TEST_SUITE_P(
    Starts, ExecKeyOpening,
    testing::Combine(
        testing::Bool(),
        testing::Values(Code{"path", "%k end", "[@][end]"},
                        Code{"name", "%c end", "[Il nome][end]"},
                        Code{"icon", "%i end", "[--icon][l’icona][end]"},
                        Code{"file", "%f end", "[end]"}, Code{"files", "%F end", "[end]"},
                        Code{"address", "%u end", "[end]"}, Code{"addresses", "%U end", "[end]"},
                        Code{"file_in_quotes", "\"%f\" end", "[][end]"},
                        Code{"code_within_a_word", "--at=%k end", "[--at=@][end]"},
                        Code{"percent", "100%% end", "[100%][end]"},
                        Code{"percent_before_a_code", "%%k %%%c end", "[%k][%Il nome][end]"},
                        Code{"old_codes", "%d%D%n%N%v%m end", "[end]"},
                        Code{"unknown_code", "a%zb end", "[ab][end]"},
                        Code{"lone_percent", "end %", "[end][%]"},
                        Code{"quoted_words", "\"two words\" end", "[two words][end]"},
                        Code{"escaped_in_quotes", "\"a \\\\\"b \\\\$c\" end", "[a \"b $c][end]"})),
    [](const auto& row) {
        return std::string(std::get<bool>(row.param) ? "in_a_terminal_" : "plainly_") +
               std::get<Code>(row.param).name;
    });

}  // namespace
}  // namespace tavo
