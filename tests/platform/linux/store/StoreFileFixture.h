// A temporary folder with a store's file in it, for tests of what happens to that file.
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

    // Starts another process that runs the SQL statements, says "held", and keeps the locks that
    // these took until its input ends.
    [[nodiscard]] ChildProgram holding(const std::vector<std::string>& statements) const {
        std::vector<std::string> command = {TAVO_TEST_PROGRAMS "/tavo_store_writer", "hold", file_};
        command.insert(command.end(), statements.begin(), statements.end());
        return ChildProgram(command);
    }

    [[nodiscard]] std::vector<std::string> putAside() const { return named(".unreadable-"); }
    [[nodiscard]] std::vector<std::string> copies() const { return named(".unread-"); }

    [[nodiscard]] std::vector<std::string> named(const std::string& what) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            const std::string name = entry.path().string();
            if (name.find(what) != std::string::npos) {
                names.push_back(name);
            }
        }
        return names;
    }

    TemporaryFolder folder_;
    std::string file_ = folder_ / "defaults.sqlite";
};

}  // namespace tavo
