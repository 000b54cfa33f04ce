#include "platform/linux/store/SqliteTable.h"

#include <charconv>
#include <cstring>
#include <thread>

#include <sqlite3.h>

namespace tavo {
namespace {

constexpr auto kBetweenTries = std::chrono::milliseconds(1);

int primary(int code) {
    return code & 0xff;
}

// Calls `attempt` until it answers something else than that another process is in the way.
template<typename Attempt>
int untilFree(Deadline until, const Attempt& attempt) {
    for (;;) {
        const int code = attempt();
        const bool locked = primary(code) == SQLITE_BUSY || primary(code) == SQLITE_LOCKED;
        if (!locked || std::chrono::steady_clock::now() >= until) {
            return code;
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
}

// Leaves the statement ready for its next use, whatever way its reader is left.
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

int stepUntilFree(sqlite3_stmt* statement, Deadline until) {
    return untilFree(until, [statement] {
        sqlite3_reset(statement);
        return sqlite3_step(statement);
    });
}

// The bytes must stay until the statement is reset.
int bindText(sqlite3_stmt* statement, int position, std::string_view text) {
    // A null pointer would bind NULL, which is not the empty text.
    const char* const bytes = text.data() != nullptr ? text.data() : "";
    return sqlite3_bind_text64(statement, position, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

std::string columnBytes(sqlite3_stmt* statement, int column) {
    const void* const bytes = sqlite3_column_blob(statement, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return bytes != nullptr ? std::string(static_cast<const char*>(bytes), size) : std::string();
}

// https://www.sqlite.org/uri.html. An absolute path follows an empty authority; without one, a path
// that begins with two slashes would lose its first name to it.
std::string immutableUri(const std::string& file) {
    std::string uri = file.starts_with('/') ? "file://" : "file:";
    for (const char c : file) {
        switch (c) {
            case '%':
                uri += "%25";
                break;
            case '?':
                uri += "%3f";
                break;
            case '#':
                uri += "%23";
                break;
            default:
                uri += c;
        }
    }
    return uri + "?immutable=1";
}

}  // namespace

void SqliteTable::CloseDatabase::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

void SqliteTable::FinalizeStatement::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

SqliteOutcome SqliteTable::open(const std::string& file, Access access, Deadline until) {
    const bool immutable = access == Access::Immutable;
    const int flags = (access == Access::ReadWrite ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY) |
                      SQLITE_OPEN_NOMUTEX | (immutable ? SQLITE_OPEN_URI : 0);
    sqlite3* database = nullptr;
    const int code =
        sqlite3_open_v2((immutable ? immutableUri(file) : file).c_str(), &database, flags, nullptr);
    database_.reset(database);
    if (code != SQLITE_OK) {
        return outcomeOf(code);
    }
    // What turns out not to be ours is left exactly as it was found, its log included.
    sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    SqliteOutcome outcome = inspect(until);
    if (outcome.done()) {
        sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    }
    return outcome;
}

SqliteOutcome SqliteTable::inspect(Deadline until) {
    std::string tables;
    if (const int code = run("SELECT count(*) FROM sqlite_master", until, &tables);
        code != SQLITE_OK) {
        // The only plain error here is a file format that this SQLite does not know.
        return code == SQLITE_ERROR
                   ? SqliteOutcome{SqliteOutcome::Kind::NotAStore, sqlite3_errmsg(database_.get())}
                   : outcomeOf(code);
    }
    if (tables == "0") {
        return {SqliteOutcome::Kind::Blank, {}};
    }
    if (SqliteOutcome outcome = prepareStatements(until); !outcome.done()) {
        return outcome;
    }
    return checkWhole(until);
}

SqliteOutcome SqliteTable::prepareStatements(Deadline until) {
    int code = prepare("SELECT type, value FROM defaults WHERE key = ?1", select_, until);
    if (code == SQLITE_OK) {
        code = prepare(
            "INSERT INTO defaults (key, type, value) VALUES (?1, ?2, ?3) "
            "ON CONFLICT (key) DO UPDATE SET type = excluded.type, value = excluded.value",
            replace_, until);
    }
    if (code == SQLITE_OK) {
        code = prepare("PRAGMA wal_checkpoint(TRUNCATE)", checkpoint_, until);
    }
    // A plain error is a missing table, column or unique key: somebody else's database.
    return code == SQLITE_ERROR
               ? SqliteOutcome{SqliteOutcome::Kind::NotAStore, sqlite3_errmsg(database_.get())}
               : outcomeOf(code);
}

// A damaged page would otherwise show only when the key that stands on it is asked for, and a
// store that answers some keys and not others is worse than one that is put aside whole.
SqliteOutcome SqliteTable::checkWhole(Deadline until) {
    std::string verdict;
    std::string pageSize;
    int code = run("PRAGMA quick_check(1)", until, &verdict);
    if (code == SQLITE_OK) {
        code = run("PRAGMA page_size", until, &pageSize);
    }
    if (code != SQLITE_OK) {
        return outcomeOf(code);
    }
    if (verdict != "ok") {
        return {SqliteOutcome::Kind::NotAStore, "it is damaged"};
    }
    const char* const end = pageSize.data() + pageSize.size();
    const auto parsed = std::from_chars(pageSize.data(), end, pageSize_);
    if (parsed.ec != std::errc() || parsed.ptr != end || pageSize_ <= 0) {
        pageSize_ = 0;
        return {SqliteOutcome::Kind::Refused, "its page size is not known"};
    }
    return {};
}

SqliteOutcome SqliteTable::create(Deadline until) {
    const int code =
        run("CREATE TABLE IF NOT EXISTS defaults ("
            "key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, value NOT NULL) WITHOUT ROWID",
            until);
    if (code != SQLITE_OK) {
        return outcomeOf(code);
    }
    SqliteOutcome outcome = inspect(until);
    if (outcome.done()) {
        sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    }
    return outcome;
}

SqliteOutcome SqliteTable::prepareWriting(Deadline until) {
    if (readyToWrite_) {
        return {};
    }
    std::string mode;
    int code = run("PRAGMA journal_mode = WAL", until, &mode);
    if (code == SQLITE_OK) {
        // A file system without shared memory keeps a rollback journal; there only EXTRA makes
        // the last commit survive a power failure.
        code =
            run(mode == "wal" ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = EXTRA", until);
    }
    readyToWrite_ = code == SQLITE_OK;
    return outcomeOf(code);
}

SqliteOutcome SqliteTable::read(std::string_view key, std::optional<SqliteRow>& row,
                                Deadline until) {
    sqlite3_stmt* const statement = select_.get();
    const Reset reset(statement);
    int code = bindText(statement, 1, key);
    if (code == SQLITE_OK) {
        code = stepUntilFree(statement, until);
    }
    if (code != SQLITE_ROW) {
        return outcomeOf(code);
    }
    const int form = sqlite3_column_type(statement, 1);
    if (form == SQLITE_TEXT || form == SQLITE_BLOB) {
        row = SqliteRow{columnBytes(statement, 0), columnBytes(statement, 1), form == SQLITE_TEXT};
    }
    return {};
}

SqliteOutcome SqliteTable::write(std::string_view key, const SqliteRow& row, Deadline until) {
    {
        sqlite3_stmt* const statement = replace_.get();
        const Reset reset(statement);
        int code = bindText(statement, 1, key);
        if (code == SQLITE_OK) {
            code = bindText(statement, 2, row.type);
        }
        if (code == SQLITE_OK) {
            code = row.isText ? bindText(statement, 3, row.value)
                              : sqlite3_bind_blob64(statement, 3, row.value.data(),
                                                    row.value.size(), SQLITE_STATIC);
        }
        if (code == SQLITE_OK) {
            code = stepUntilFree(statement, until);
        }
        if (code != SQLITE_DONE) {
            return outcomeOf(code);
        }
    }
    // The value is safe in the log by now. Moving it on at once keeps the one file whole by
    // itself whenever nobody writes, so that it can be copied, replaced or deleted. A reader in
    // the way only puts this off.
    const Reset reset(checkpoint_.get());
    sqlite3_step(checkpoint_.get());
    return {};
}

SqliteOutcome SqliteTable::copyInto(const std::string& file, Deadline until) {
    Statement statement;
    int code = prepare("VACUUM INTO ?1", statement, until);
    if (code == SQLITE_OK) {
        code = bindText(statement.get(), 1, file);
    }
    if (code == SQLITE_OK) {
        code = stepUntilFree(statement.get(), until);
    }
    return outcomeOf(code);
}

bool SqliteTable::isReadOnly() const {
    return sqlite3_db_readonly(database_.get(), "main") != 0;
}

int SqliteTable::prepare(const char* text, Statement& statement, Deadline until) {
    return untilFree(until, [&] {
        sqlite3_stmt* prepared = nullptr;
        const int code = sqlite3_prepare_v3(database_.get(), text, -1, SQLITE_PREPARE_PERSISTENT,
                                            &prepared, nullptr);
        statement.reset(prepared);
        return code;
    });
}

// SQLITE_OK, or what went wrong. `answer`: the first column of the first row.
int SqliteTable::run(const char* text, Deadline until, std::string* answer) {
    Statement statement;
    if (const int code = prepare(text, statement, until); code != SQLITE_OK) {
        return code;
    }
    const int code = stepUntilFree(statement.get(), until);
    if (code == SQLITE_ROW && answer != nullptr) {
        *answer = columnBytes(statement.get(), 0);
    }
    return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
}

SqliteOutcome SqliteTable::outcomeOf(int code) const {
    using Kind = SqliteOutcome::Kind;
    switch (primary(code)) {
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
