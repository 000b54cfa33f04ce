// A store's file in a folder of its own, for tests of what happens to such files.
#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/store/SqliteDefaultsStore.h"
#include "tests/TemporaryFolder.h"
#include "tests/platform/linux/fixtures/ChildProgram.h"

namespace tavo {

inline std::string contents(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

inline void overwrite(const std::string& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

class StoreFileFixture : public testing::Test {
protected:
    [[nodiscard]] std::unique_ptr<DefaultsStore> open() const {
        return makeSqliteDefaultsStore(file_);
    }

    // Another process that has run the statements and keeps the locks they took until its input
    // ends.
    [[nodiscard]] ChildProgram holding(const std::vector<std::string>& statements) const {
        std::vector<std::string> command = {TAVO_TEST_PROGRAMS "/tavo_store_writer", "hold", file_};
        command.insert(command.end(), statements.begin(), statements.end());
        return ChildProgram(command);
    }

    // The files that were put aside, without those that SQLite keeps beside a database.
    [[nodiscard]] std::vector<std::string> putAside() const { return dated(".unreadable-"); }

    // The copies of stores that could not be read.
    [[nodiscard]] std::vector<std::string> unreadCopies() const { return dated(".unread-"); }

private:
    [[nodiscard]] std::vector<std::string> dated(const std::string& what) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            const std::string name = entry.path().string();
            const bool companion = name.ends_with("-wal") || name.ends_with("-shm");
            if (name.find(what) != std::string::npos && !companion) {
                names.push_back(name);
            }
        }
        return names;
    }

protected:
    TemporaryFolder folder_;
    std::string file_ = folder_ / "defaults.sqlite";
};

}  // namespace tavo
