// The table key · type · value in one open SQLite database: what the defaults store's file holds.
//
// Knows SQLite, and nothing of where files come from or go to. Every operation tries until
// `until` while another process has the database locked; SQLite's own waiting does not cover the
// change to WAL, so none of it is used. One thread.
#pragma once

#include <chrono>
#include <cstdint>
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
    std::string value;
    bool isText = false;  // TEXT; otherwise BLOB

    bool operator==(const SqliteRow&) const = default;
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
    std::string reason;

    [[nodiscard]] bool done() const { return kind == Kind::Done; }
};

class SqliteTable {
public:
    enum class Access {
        ReadWrite,
        ReadOnly,
        Immutable,  // the database file as it lies there, without its log and without any lock
    };

    // Opens and looks through the database in `file`, which must exist. Done: the table is
    // whole and can be read. Blank: create() is next. Otherwise the object is of no use.
    SqliteOutcome open(const std::string& file, Access access, Deadline until);

    SqliteOutcome create(Deadline until);

    // Once before the first write() of this object.
    SqliteOutcome prepareWriting(Deadline until);

    SqliteOutcome read(std::string_view key, std::optional<SqliteRow>& row, Deadline until);

    // On disk when it answers Done.
    SqliteOutcome write(std::string_view key, const SqliteRow& row, Deadline until);

    // All there is in the database now, into `file`, which must be empty. Not yet safe from a
    // power failure.
    SqliteOutcome copyInto(const std::string& file, Deadline until);

    [[nodiscard]] bool isReadOnly() const;
    [[nodiscard]] std::int64_t pageSize() const { return pageSize_; }

private:
    struct CloseDatabase {
        void operator()(sqlite3* database) const;
    };
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

    SqliteOutcome inspect(Deadline until);
    SqliteOutcome checkWhole(Deadline until);
    SqliteOutcome prepareStatements(Deadline until);
    int prepare(const char* text, Statement& statement, Deadline until);
    int run(const char* text, Deadline until, std::string* answer = nullptr);
    [[nodiscard]] SqliteOutcome outcomeOf(int code) const;

    // Before the statements, which must go first.
    std::unique_ptr<sqlite3, CloseDatabase> database_;
    Statement select_;
    Statement replace_;
    Statement checkpoint_;
    std::int64_t pageSize_ = 0;
    bool readyToWrite_ = false;
};

}  // namespace tavo
