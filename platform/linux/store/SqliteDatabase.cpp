#include "platform/linux/store/SqliteDatabase.h"

#include <charconv>
#include <cstring>
#include <thread>
#include <utility>

#include <sys/stat.h>

#include <sqlite3.h>

namespace tavo {
namespace {

using Kind = SqliteOutcome::Kind;

// SQLite's busy handler. Tries often, unlike SQLite's own busy timeout: between two writes of a
// process that writes without a pause, the database is free for some 50 microseconds only.
int sleepUnlessLate(void* until, int /*tries*/) {
    if (std::chrono::steady_clock::now() >= *static_cast<const Deadline*>(until)) {
        return 0;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(100));
    return 1;
}

// Resets the statement at the end of the scope, which ends its lock on the database.
class Reset {
public:
    explicit Reset(sqlite3_stmt* statement) : statement_(statement) {}
    ~Reset() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    Reset(const Reset&) = delete;
    Reset& operator=(const Reset&) = delete;

private:
    sqlite3_stmt* statement_;
};

// The bytes must stay valid until the statement is reset.
int bindText(sqlite3_stmt* statement, int position, std::string_view text) {
    // A null pointer would bind NULL, which is not the empty text.
    const char* const bytes = text.data() != nullptr ? text.data() : "";
    return sqlite3_bind_text64(statement, position, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

// The text of a column, in UTF-8 whatever the encoding of the database.
std::string columnText(sqlite3_stmt* statement, int column) {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return text != nullptr ? std::string(text, size) : std::string();
}

std::string columnBlob(sqlite3_stmt* statement, int column) {
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return bytes != nullptr ? std::string(bytes, size) : std::string();
}

}  // namespace

void SqliteDatabase::CloseDatabase::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

void SqliteDatabase::FinalizeStatement::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

SqliteOutcome SqliteDatabase::open(const std::string& file, Deadline until) {
    file_ = file;
    until_ = until;
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &database,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(database);
    if (code != SQLITE_OK) {
        return outcomeOf(code);
    }
    sqlite3_busy_handler(database, sleepUnlessLate, &until_);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    return inspect();
}

SqliteOutcome SqliteDatabase::create(Deadline until) {
    until_ = until;
    const int code =
        run("CREATE TABLE IF NOT EXISTS defaults ("
            "key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, value NOT NULL) WITHOUT ROWID");
    return code == SQLITE_OK ? inspect() : outcomeOf(code);
}

SqliteOutcome SqliteDatabase::inspect() {
    // One transaction: no other process may write between two of the checks.
    if (const int code = run("BEGIN"); code != SQLITE_OK) {
        return outcomeOf(code);
    }
    SqliteOutcome outcome = inspectLocked();
    run("COMMIT");
    if (!outcome.done()) {
        return outcome;
    }
    // Earlier versions of this program used WAL mode. While another process still does, the change
    // fails without waiting for it, and WAL mode serves as well until a later opening.
    const Deadline until = std::exchange(until_, Deadline());
    run("PRAGMA journal_mode = DELETE");
    until_ = until;
    return outcomeOf(run("PRAGMA synchronous = EXTRA"));
}

SqliteOutcome SqliteDatabase::inspectLocked() {
    // Triggers, views and virtual tables run code when a table is used: this program makes none.
    std::string schema;
    std::string pageSize;
    int code =
        run("SELECT CASE WHEN count(*) = 0 THEN 'blank' WHEN sum(type IN ('trigger', 'view') OR "
            "sql LIKE 'CREATE VIRTUAL%') THEN 'foreign' ELSE 'tables' END FROM sqlite_master",
            &schema);
    if (code == SQLITE_OK) {
        code = run("PRAGMA page_size", &pageSize);
    }
    std::string verdict = "ok";
    if (code == SQLITE_OK && schema == "tables") {
        code = prepare("SELECT type, value FROM defaults WHERE key = ?1", select_);
        if (code == SQLITE_OK) {
            code = prepare(
                "INSERT INTO defaults (key, type, value) VALUES (?1, ?2, ?3) "
                "ON CONFLICT (key) DO UPDATE SET type = excluded.type, value = excluded.value",
                replace_);
        }
        // Without this check a damaged page would show only when a key on it is read.
        if (code == SQLITE_OK) {
            code = run("PRAGMA quick_check(1)", &verdict);
        }
    }
    // SQLITE_ERROR means a missing column or unique key, or a file format newer than this SQLite.
    if (code == SQLITE_ERROR) {
        return {Kind::NotAStore, sqlite3_errmsg(database_.get())};
    }
    if (code != SQLITE_OK) {
        return outcomeOf(code);
    }
    if (schema == "foreign") {
        return {Kind::NotAStore, "it is another program's database"};
    }
    if (verdict != "ok") {
        return {Kind::NotAStore, "it is damaged"};
    }
    // A file that was cut short must be noticed here: SQLite reads what is missing of the last page
    // as zeros.
    struct stat status {};
    std::int64_t bytes = 0;
    std::from_chars(pageSize.data(), pageSize.data() + pageSize.size(), bytes);
    if (stat(file_.c_str(), &status) != 0 || bytes <= 0 || status.st_size % bytes != 0) {
        return {Kind::NotAStore, "it is cut short"};
    }
    return {schema == "blank" ? Kind::Blank : Kind::Done, {}};
}

SqliteOutcome SqliteDatabase::read(std::string_view key, std::optional<SqliteRow>& row,
                                   Deadline until) {
    until_ = until;
    sqlite3_stmt* const statement = select_.get();
    const Reset reset(statement);
    int code = bindText(statement, 1, key);
    if (code == SQLITE_OK) {
        code = sqlite3_step(statement);
    }
    if (code != SQLITE_ROW) {
        return outcomeOf(code);
    }
    const int form = sqlite3_column_type(statement, 1);
    if (form == SQLITE_TEXT) {
        row = SqliteRow{columnText(statement, 0), columnText(statement, 1), true};
    } else if (form == SQLITE_BLOB) {
        row = SqliteRow{columnText(statement, 0), columnBlob(statement, 1), false};
    }
    return {};
}

SqliteOutcome SqliteDatabase::write(std::string_view key, const SqliteRow& row, Deadline until) {
    until_ = until;
    sqlite3_stmt* const statement = replace_.get();
    const Reset reset(statement);
    int code = bindText(statement, 1, key);
    if (code == SQLITE_OK) {
        code = bindText(statement, 2, row.type);
    }
    if (code == SQLITE_OK) {
        code = row.isText ? bindText(statement, 3, row.value)
                          : sqlite3_bind_blob64(statement, 3, row.value.data(), row.value.size(),
                                                SQLITE_STATIC);
    }
    if (code == SQLITE_OK) {
        code = sqlite3_step(statement);
    }
    return outcomeOf(code);
}

SqliteOutcome SqliteDatabase::copyTo(const std::string& file, Deadline until) {
    until_ = until;
    Statement vacuum;
    int code = prepare("VACUUM INTO ?1", vacuum);
    if (code == SQLITE_OK) {
        code = bindText(vacuum.get(), 1, file);
    }
    if (code == SQLITE_OK) {
        code = sqlite3_step(vacuum.get());
    }
    return outcomeOf(code);
}

bool SqliteDatabase::isReadOnly() const {
    return sqlite3_db_readonly(database_.get(), "main") != 0;
}

int SqliteDatabase::prepare(const char* text, Statement& statement) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v3(database_.get(), text, -1, SQLITE_PREPARE_PERSISTENT,
                                        &prepared, nullptr);
    statement.reset(prepared);
    return code;
}

// Runs one statement. Returns SQLITE_OK, or the code of what went wrong. `answer` gets the first
// column of the first row.
int SqliteDatabase::run(const char* text, std::string* answer) {
    Statement statement;
    if (const int code = prepare(text, statement); code != SQLITE_OK) {
        return code;
    }
    const int code = sqlite3_step(statement.get());
    if (code == SQLITE_ROW && answer != nullptr) {
        *answer = columnText(statement.get(), 0);
    }
    return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
}

SqliteOutcome SqliteDatabase::outcomeOf(int code) const {
    switch (code & 0xff) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return {};
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
            return {Kind::NotAStore, sqlite3_errmsg(database_.get())};
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return {Kind::Busy, "another process has locked it"};
        default:
            break;
    }
    std::string reason = sqlite3_errmsg(database_.get());
    if (const int number = sqlite3_system_errno(database_.get()); number != 0) {
        reason += std::string(" (") + std::strerror(number) + ")";
    }
    return {Kind::Refused, reason};
}

}  // namespace tavo
