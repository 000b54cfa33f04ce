// What every FileManager promises. One source file of a test program includes this and instantiates
// the tests with makers of worlds.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/FileManager.h"

namespace tavo {

// Folders of one test, and the file manager that lists them.
class FileManagerWorld {
public:
    virtual ~FileManagerWorld() = default;

    virtual FileManager& files() = 0;

    // Makes a folder, or replaces what is in it, and gives its path. The entries are plain files.
    virtual std::string makeFolder(const std::string& name,
                                   const std::vector<std::string>& entries) = 0;
    // The path of something that is no folder.
    virtual std::string makeFile(const std::string& name) = 0;
    // Takes the permission to list `folder` away. False if this process can list it all the same,
    // as root can.
    virtual bool makeUnreadable(const std::string& folder) = 0;
    // The path of a folder that was never made.
    virtual std::string missing(const std::string& name) = 0;
};

struct FileManagerCase {
    std::string name;
    std::function<std::unique_ptr<FileManagerWorld>()> makeWorld;
};

inline void PrintTo(const FileManagerCase& value, std::ostream* stream) {
    *stream << value.name;
}

class FileManagerContract : public testing::TestWithParam<FileManagerCase> {
protected:
    [[nodiscard]] std::optional<std::vector<std::string>> list(const std::string& folder) {
        return world_->files().contentsOfDirectory(folder);
    }

    std::unique_ptr<FileManagerWorld> world_ = GetParam().makeWorld();
};

TEST_P(FileManagerContract, lists_every_direct_entry_hidden_ones_included) {
    const std::vector<std::string> entries = {"B.app", "a", ".hidden", "...", "with space.app"};
    const std::string folder = world_->makeFolder("Applications", entries);
    const auto listed = list(folder);
    ASSERT_TRUE(listed);
    EXPECT_THAT(*listed, testing::UnorderedElementsAreArray(entries));
}

TEST_P(FileManagerContract, an_empty_folder_lists_as_empty) {
    const auto listed = list(world_->makeFolder("Empty", {}));
    ASSERT_TRUE(listed);
    EXPECT_THAT(*listed, testing::IsEmpty());
}

TEST_P(FileManagerContract, names_are_the_exact_bytes) {
    const std::vector<std::string> entries = {"Caf\xc3\xa9", "Cafe\xcc\x81", "Caf\xe9", "a\nb"};
    const auto listed = list(world_->makeFolder("Bytes", entries));
    ASSERT_TRUE(listed);
    EXPECT_THAT(*listed, testing::UnorderedElementsAreArray(entries));
}

TEST_P(FileManagerContract, a_missing_folder_is_absent) {
    EXPECT_EQ(list(world_->missing("Missing")), std::nullopt);
}

TEST_P(FileManagerContract, a_file_in_place_of_a_folder_is_absent) {
    EXPECT_EQ(list(world_->makeFile("File")), std::nullopt);
}

TEST_P(FileManagerContract, an_unreadable_folder_is_absent) {
    const std::string folder = world_->makeFolder("Secret", {"A.app"});
    if (!world_->makeUnreadable(folder)) {
        GTEST_SKIP() << "this process may list every folder and cannot give that up";
    }
    EXPECT_EQ(list(folder), std::nullopt);
}

TEST_P(FileManagerContract, every_call_looks_anew) {
    const std::string folder = world_->makeFolder("Changing", {"A.app"});
    ASSERT_TRUE(list(folder));
    world_->makeFolder("Changing", {"B.app", "C.app"});
    const auto listed = list(folder);
    ASSERT_TRUE(listed);
    EXPECT_THAT(*listed, testing::UnorderedElementsAre("B.app", "C.app"));
}

TEST_P(FileManagerContract, the_home_folder_is_absolute_and_has_no_trailing_slash) {
    const std::string home = world_->files().homeDirectory();
    ASSERT_FALSE(home.empty());
    EXPECT_EQ(home.front(), '/');
    EXPECT_TRUE(home == "/" || home.back() != '/');
}

inline std::string nameOfCase(const testing::TestParamInfo<FileManagerCase>& info) {
    return info.param.name;
}

}  // namespace tavo
