// Everything that can keep an application from starting, and what the user then reads.
#include <functional>

#include "tests/platform/linux/fixtures/OpeningFixture.h"
#include "tests/platform/linux/fixtures/OrdinaryUser.h"

namespace tavo {
namespace {

using processes::Answer;
using processes::Folder;
using processes::OpeningTest;

struct Row {
    const char* name;
    const char* lines;  // more lines of the entry; @ stands for the test's folder
    const char* text;   // what the user reads; @ stands for the test's folder
};

class EntryFailure : public OpeningTest, public testing::WithParamInterface<Row> {
protected:
    [[nodiscard]] std::string filled(std::string text) const {
        for (std::size_t at = 0; (at = text.find('@', at)) != std::string::npos;) {
            text.replace(at, 1, folder_.path());
            at += folder_.path().size();
        }
        return text;
    }
};

TEST_P(EntryFailure, is_told_with_the_programs_name) {
    const Row& row = GetParam();
    SCOPED_TRACE(row.name);
    folder_.write("plain", "echo never\n");
    folder_.write("orphan", "#!/no/such/interpreter\n", 0755);
    folder_.write("snake", "#!/usr/bin/env tavo-no-such-python\n", 0755);
    const Answer answer = open(entry(filled(row.lines)));
    EXPECT_EQ(answer.text(), filled(row.text));
    EXPECT_EQ(answer.calls, 1);
    EXPECT_EQ(answer.running, std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, EntryFailure,
    testing::Values(
        Row{"hidden", "Exec=/bin/true\nHidden=true\n",
            "La voce di menu «@/applications/app.desktop» è segnata come rimossa (Hidden)."},
        Row{"no_command", "Terminal=false\n",
            "La voce di menu «@/applications/app.desktop» non dice quale programma avviare (manca "
            "Exec)."},
        Row{"empty_command", "Exec=\n",
            "La voce di menu «@/applications/app.desktop» non dice quale programma avviare (manca "
            "Exec)."},
        Row{"unbalanced_quotes", "Exec=tool \"unbalanced\n",
            "La voce di menu «@/applications/app.desktop» contiene un comando che non si può "
            "leggere: «tool \"unbalanced»."},
        Row{"blank_command", "Exec=\\s\\s\n",
            "La voce di menu «@/applications/app.desktop» contiene un comando che non si può "
            "leggere: «  »."},
        Row{"missing_program", "Exec=@/gone --x\n", "Il programma «@/gone» non esiste."},
        Row{"missing_tryexec", "Exec=/bin/true\nTryExec=@/gone\n",
            "Il programma «@/gone» non esiste."},
        Row{"no_permission", "Exec=@/plain\n",
            "Il programma «@/plain» non ha il permesso di essere eseguito."},
        Row{"a_folder", "Exec=@/applications\n",
            "Il programma «@/applications» è una cartella e non si può avviare."},
        Row{"missing_working_directory", "Exec=/bin/true\nPath=@/gone\n",
            "Il programma «/bin/true» deve partire nella cartella «@/gone», che non esiste o non "
            "è accessibile."},
        Row{"missing_interpreter", "Exec=@/orphan\n",
            "Il programma «@/orphan» richiede l’interprete «/no/such/interpreter», che non esiste "
            "o non si può eseguire."},
        Row{"missing_interpreter_by_env", "Exec=@/snake\n",
            "Il programma «@/snake» richiede l’interprete «tavo-no-such-python», che non esiste o "
            "non si può eseguire."},
        Row{"another_type", "Type=Link\nURL=file:///\n",
            "Il file «@/applications/app.desktop» non è la voce di menu di un’app."}),
    [](const auto& row) { return std::string(row.param.name); });

class OpeningFailure : public OpeningTest {};

TEST_F(OpeningFailure, a_missing_program_is_told_with_the_search_path) {
    const processes::Variable path("PATH", "/usr/bin:/bin");
    EXPECT_EQ(open(entry("Exec=tavo-no-such-tool %U\n")).text(),
              "Il programma «tavo-no-such-tool» non è stato trovato (cercato in: /usr/bin:/bin).");
}

TEST_F(OpeningFailure, an_entry_that_vanished_is_told) {
    const std::string path = entry("Exec=/bin/true\n");
    ASSERT_TRUE(workspace().bundle(path));
    std::filesystem::remove(path);
    EXPECT_EQ(open(path).text(), "L’app «" + path + "» non esiste più.");
}

TEST_F(OpeningFailure, what_lies_where_the_user_may_not_search_or_read_is_not_called_gone) {
    const std::string path = entry("Exec=/bin/true\n");
    folder_.script("applications/Foo.app/Foo", "");
    const std::string closed = folder_.write("closed.desktop", "", 0);
    ::chmod(folder_.path().c_str(), 0755);
    ::chmod(folder_.path("applications").c_str(), 0);
    {
        const OrdinaryUser user;
        ASSERT_TRUE(user.succeeded());
        for (const std::string& entry : {path, closed}) {
            EXPECT_EQ(workspace().bundle(entry), std::nullopt);
            EXPECT_EQ(open(entry).text(),
                      "La voce di menu «" + entry + "» non si può leggere: il permesso è negato.");
        }
        const std::string bundle = folder_.path("applications/Foo.app");
        EXPECT_EQ(workspace().bundle(bundle), std::nullopt);
        EXPECT_EQ(open(bundle).text(),
                  "L’app «" + bundle + "» non si può leggere: il permesso è negato.");
    }
    ::chmod(folder_.path("applications").c_str(), 0755);
}

TEST_F(OpeningFailure, an_entry_that_changed_since_its_facts_were_asked_is_read_again) {
    const std::string path = entry("Exec=/bin/true\n");
    ASSERT_TRUE(workspace().bundle(path));
    entry("Exec=/bin/true\nHidden=true\n");
    EXPECT_EQ(open(path).text(), "La voce di menu «" + path + "» è segnata come rimossa (Hidden).");
}

TEST_F(OpeningFailure, a_file_that_is_no_entry_is_told) {
    for (const std::string content : {"", "garbage", "[Other Group]\nType=Application\n"}) {
        const std::string path = folder_.write("bad.desktop", content);
        EXPECT_EQ(open(path).text(), "Il file «" + path + "» non è la voce di menu di un’app.");
    }
    const std::string pipe = folder_.path("pipe.desktop");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(open(pipe).text(),
              "La voce di menu «" + pipe + "» non si può leggere: non è un file normale.");
}

TEST_F(OpeningFailure, what_is_neither_entry_nor_bundle_is_told) {
    const std::string path = folder_.write("note.txt", "x");
    EXPECT_EQ(open(path).text(),
              "«" + path + "» non è un’app: non è una cartella e non è una voce di menu.");
}

TEST_F(OpeningFailure, a_missing_terminal_is_told) {
    const std::string program = folder_.script("only/tool", "");
    const processes::Variable path("PATH", folder_.path("only"));
    EXPECT_EQ(open(entry("Exec=" + program + "\nTerminal=true\n")).text(),
              "Il programma «" + program +
                  "» si usa in un terminale, ma non è stato trovato alcun terminale adatto.");
}

TEST_F(OpeningFailure, a_program_that_the_system_cannot_run_is_told_by_its_early_end) {
    // An ELF file that names a loader which does not exist: execve(2) then fails with ENOENT.
    std::string program;
    std::ifstream source(TAVO_TEST_PROGRAMS "/tavo_gio_lister", std::ios::binary);
    program.assign(std::istreambuf_iterator<char>(source), {});
    const std::size_t loader = program.find("/ld-linux");
    ASSERT_NE(loader, std::string::npos);
    program[loader + 1] = 'X';
    const std::string path = folder_.write("loaderless", program, 0755);
    const std::string text = open(entry("Exec=" + path + "\n")).text();
    EXPECT_NE(text.find("«" + path + "»"), std::string::npos) << text;
    EXPECT_NE(text.find("codice di errore"), std::string::npos) << text;
}

}  // namespace
}  // namespace tavo
