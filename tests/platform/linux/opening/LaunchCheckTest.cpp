#include "platform/linux/opening/LaunchCheck.h"
#include "tests/platform/linux/fixtures/OrdinaryUser.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using processes::Folder;

class LaunchCheck : public testing::Test {
protected:
    // The path that findProgram() finds, or the text of its failure.
    std::string found(const std::string& program, const std::string& workingDirectory = {}) {
        const auto result = findProgram(ExecutableLookup(searchPath_), program, workingDirectory);
        return result ? result.value() : result.error().message;
    }

    std::string scriptFailure(const std::string& head) {
        const auto result =
            checkProgram(ExecutableLookup(searchPath_), folder_.write("script", head, 0755));
        return result ? "(runs)" : result.error().message;
    }

    Folder folder_;
    std::string searchPath_ = folder_.path("a") + "::" + folder_.path("b");
};

TEST_F(LaunchCheck, the_first_executable_file_in_the_search_path_is_the_program) {
    const std::string second = folder_.script("b/tool", "");
    EXPECT_EQ(found("tool"), second);
    folder_.write("a/tool", "not executable");
    EXPECT_EQ(found("tool"), second);
    const std::string first = folder_.script("a/tool", "");
    EXPECT_EQ(found("tool"), first);
}

TEST_F(LaunchCheck, a_folder_of_the_same_name_is_passed_over) {
    std::filesystem::create_directories(folder_.path("a/tool"));
    const std::string second = folder_.script("b/tool", "");
    EXPECT_EQ(found("tool"), second);
}

TEST_F(LaunchCheck, a_missing_program_is_reported_with_the_search_path) {
    EXPECT_EQ(found("tool"),
              "Il programma «tool» non è stato trovato (cercato in: " + searchPath_ + ").");
    EXPECT_EQ(found("/no/such/tool"), "Il programma «/no/such/tool» non esiste.");
    EXPECT_NE(found("").find("non è stato trovato"), std::string::npos);
}

TEST_F(LaunchCheck, what_cannot_be_executed_is_reported_by_its_path) {
    const std::string plain = folder_.write("a/plain", "");
    EXPECT_EQ(found("plain"),
              "Il programma «" + plain + "» non ha il permesso di essere eseguito.");
    EXPECT_EQ(found(plain), found("plain"));
    EXPECT_EQ(found(folder_.path()),
              "Il programma «" + folder_.path() + "» è una cartella e non si può avviare.");
}

TEST_F(LaunchCheck, a_relative_path_counts_from_the_working_directory) {
    folder_.script("work/bin/tool", "");
    EXPECT_EQ(found("bin/tool", folder_.path("work")), folder_.path("work") + "/bin/tool");
    EXPECT_EQ(found("bin/tool"), "Il programma «bin/tool» non esiste.");
}

TEST_F(LaunchCheck, a_program_in_a_folder_that_may_not_be_searched_is_not_called_missing) {
    const std::string program = folder_.script("closed/tool", "");
    ::chmod(folder_.path().c_str(), 0755);
    ::chmod(folder_.path("closed").c_str(), 0);
    const OrdinaryUser user;
    ASSERT_TRUE(user.succeeded());
    EXPECT_EQ(found(program),
              "Il programma «" + program + "» non si può avviare: il permesso è negato.");
    searchPath_ = folder_.path("closed");
    EXPECT_EQ(found("tool"),
              "Il programma «tool» non è stato trovato (cercato in: " + searchPath_ + ").");
}

TEST_F(LaunchCheck, a_script_whose_interpreter_is_there_runs) {
    EXPECT_EQ(scriptFailure("#!/bin/sh\n"), "(runs)");
    EXPECT_EQ(scriptFailure("#! /bin/sh -e\n"), "(runs)");
    EXPECT_EQ(scriptFailure("#!/bin/sh"), "(runs)");
    EXPECT_EQ(scriptFailure("echo no first line\n"), "(runs)");
    EXPECT_EQ(scriptFailure(""), "(runs)");
    EXPECT_EQ(scriptFailure("#!\n"), "(runs)");
}

TEST_F(LaunchCheck, a_script_whose_interpreter_is_missing_is_reported_with_both_names) {
    const std::string script = folder_.path("script");
    EXPECT_EQ(scriptFailure("#!/no/such/python -u\n"),
              "Il programma «" + script +
                  "» richiede l’interprete «/no/such/python», che non esiste o non si può "
                  "eseguire.");
}

TEST_F(LaunchCheck, an_interpreter_by_way_of_env_is_looked_for_in_the_search_path) {
    EXPECT_NE(scriptFailure("#!/usr/bin/env python9\n").find("«python9»"), std::string::npos);
    folder_.script("b/python9", "");
    EXPECT_EQ(scriptFailure("#!/usr/bin/env python9\n"), "(runs)");
    EXPECT_EQ(scriptFailure("#!/usr/bin/env -S python8 -u\n"), "(runs)");
    EXPECT_EQ(scriptFailure("#!/usr/bin/env A=b python8\n"), "(runs)");
}

TEST_F(LaunchCheck, texts_are_valid_whatever_bytes_a_name_has) {
    EXPECT_EQ(found("/no/\xff"), "Il programma «/no/\uFFFD» non esiste.");
}

}  // namespace
}  // namespace tavo
