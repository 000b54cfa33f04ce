// One open SQLite database and its table key · type · value: what the file of the defaults store
// holds.
//
// The database has a rollback journal and synchronous=EXTRA, so that a write is on disk when it
// returns and the folder holds no second file between two writes. Defensive mode is on and the
// schema is not trusted. Every call waits until `until` while another process has the database
// locked. One thread.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tavo {

using Deadline = std::chrono::steady_clock::time_point;

struct SqliteRow {
    std::string type;
    std::string value;    // UTF-8 when isText
    bool isText = false;  // TEXT; otherwise BLOB
};

struct SqliteOutcome {
    enum class Kind {
        Done,
        Blank,      // no file, or a database without any table
        NotAStore,  // damaged, no database at all, or another program's
        Busy,       // locked by another process until the deadline
        Refused,    // permissions, a full disk, a failing one: says nothing about the content
    };
    Kind kind = Kind::Done;
    std::string reason;  // for a person, in English

    [[nodiscard]] bool done() const { return kind == Kind::Done; }
};

class SqliteDatabase {
public:
    SqliteDatabase() = default;
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    // Opens the database in `file`, which must exist, rolls back what a killed writer left
    // unfinished, and checks the whole content. A database in WAL mode gets a rollback journal,
    // unless another process uses it. Done: the table is sound. Blank: create() is next. After any
    // other outcome the object is of no use. Where the file cannot be written, the database is open
    // for reading only.
    SqliteOutcome open(const std::string& file, Deadline until);

    SqliteOutcome create(Deadline until);

    // `row` stays absent when the key has none, or when its value is neither TEXT nor BLOB.
    SqliteOutcome read(std::string_view key, std::optional<SqliteRow>& row, Deadline until);

    SqliteOutcome write(std::string_view key, const SqliteRow& row, Deadline until);

    // Writes all that the database holds into `file`, which must be empty or not exist.
    SqliteOutcome copyTo(const std::string& file, Deadline until);

    [[nodiscard]] bool isReadOnly() const;

private:
    struct CloseDatabase {
        void operator()(sqlite3* database) const;
    };
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

    SqliteOutcome inspect();
    SqliteOutcome inspectLocked();
    int prepare(const char* text, Statement& statement);
    int run(const char* text, std::string* answer = nullptr);
    [[nodiscard]] SqliteOutcome outcomeOf(int code) const;

    std::string file_;
    Deadline until_;  // of the call that is under way
    // Declared before the statements, and so destroyed after them: SQLite wants them finalized
    // before the database is closed.
    std::unique_ptr<sqlite3, CloseDatabase> database_;
    Statement select_;
    Statement replace_;
};

}  // namespace tavo
