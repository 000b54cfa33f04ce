// A database opened by SQLite alone, as another program would read, write or lock it.
#pragma once

#include <stdexcept>
#include <string>

#include <sqlite3.h>

namespace tavo {

class RawSqlite {
public:
    explicit RawSqlite(const std::string& file) {
        if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(database_));
        }
        sqlite3_busy_timeout(database_, 5000);
    }
    ~RawSqlite() { sqlite3_close(database_); }
    RawSqlite(const RawSqlite&) = delete;
    RawSqlite& operator=(const RawSqlite&) = delete;

    // Runs any number of statements. Returns the first column of the first row, "" when there is
    // none.
    std::string run(const std::string& text) {
        std::string answer;
        char* message = nullptr;
        const auto firstColumn = [](void* into, int, char** values, char**) {
            auto& first = *static_cast<std::string*>(into);
            if (first.empty() && values[0] != nullptr) {
                first = values[0];
            }
            return 0;
        };
        if (sqlite3_exec(database_, text.c_str(), firstColumn, &answer, &message) != SQLITE_OK) {
            const std::string reason = message != nullptr ? message : "unknown";
            sqlite3_free(message);
            throw std::runtime_error(text + ": " + reason);
        }
        return answer;
    }

private:
    sqlite3* database_ = nullptr;
};

}  // namespace tavo
