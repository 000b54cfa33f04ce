// The one file of the defaults store, through everything that can happen to it: it is not there
// yet, appears, is replaced, deleted, locked, not writable, damaged, or never was a store.
//
// Keeps one connection open, and before each use looks whether it still leads to the file that
// bears the name; so a read costs one stat(2) and one prepared statement. Reads make nothing. The
// first write makes the folders (0700) and the file (0600; its log gets the same). What is not a
// store reads as empty, and the first write moves it aside, with its log, under a dated name
// ("defaults.sqlite.unreadable-2026-11-21T10-15-30"). A file that is merely locked, unreadable or
// out of space never moves.
//
// A read that the file would not answer - locked, no permission, a failing disk - looks to its
// caller like a value that was never stored, and what the caller then writes may be built from
// nothing. So the keys of such reads are remembered until one of them is read well or written.
// Before a row under such a key is replaced by another, the whole store is kept beside the file as
// a copy (0600) under a dated name ("defaults.sqlite.unread-2026-11-21T10-15-30"), which standard
// error is told in one line; no copy, no write. Nothing is copied for a row that is not there, is
// the same already, or is in the last copy. What another process writes between the copy and the
// write is not in the copy. One thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "platform/linux/store/SqliteTable.h"

namespace tavo {

class SqliteStoreFile {
public:
    // How long a lock of another process is waited for: by a write, which may lose something
    // otherwise, and by a read, for which the window waits.
    static constexpr std::chrono::seconds kWritePatience{2};
    static constexpr std::chrono::milliseconds kReadPatience{100};

    // An empty name is a store that nobody can write.
    explicit SqliteStoreFile(const std::string& file);

    // Absent also when the file cannot be read now. Once waiting for a lock was in vain, it
    // is not waited for again until a read succeeds.
    std::optional<SqliteRow> read(std::string_view key);

    // On disk when it answers nothing; otherwise the reason why not, for a person.
    std::optional<std::string> write(std::string_view key, const SqliteRow& row, Deadline until);

    [[nodiscard]] const std::string& name() const { return file_; }

private:
    // Which file bears the name, and whether its content is still the one last seen.
    struct Identity {
        dev_t device = 0;
        ino_t node = 0;
        mode_t mode = 0;
        off_t size = 0;
        std::int64_t changed = 0;  // nanoseconds

        [[nodiscard]] bool sameFile(const Identity& other) const {
            return device == other.device && node == other.node;
        }
        bool operator==(const Identity&) const = default;
    };
    static std::optional<Identity> identityOf(const std::string& file);

    // Of a key whose last read went unanswered.
    struct Unread {
        std::string reason;
        std::optional<SqliteRow> kept;  // in the last copy
    };

    void remember(std::string_view key, const SqliteOutcome& outcome);
    SqliteOutcome keepUnread(std::string_view key, const SqliteRow& row, Deadline until);
    SqliteOutcome keepCopy(const std::string& why, Deadline until);

    SqliteOutcome connect(Deadline until);
    SqliteOutcome open(const Identity& identity, Deadline until);
    SqliteOutcome openAs(SqliteTable::Access access, const Identity& identity, Deadline until);
    SqliteOutcome connectToWrite(Deadline until);
    SqliteOutcome makeStore(Deadline until);
    SqliteOutcome createTable(Deadline until);
    void close();

    std::string file_;
    std::unique_ptr<SqliteTable> table_;
    Identity identity_;        // of the file behind table_
    SqliteOutcome writing_;    // Done, or why table_ is good for reading only
    bool logLeftOut_ = false;  // table_ lacks a log that could not be read
    bool locked_ = false;      // the last read waited in vain
    std::map<std::string, Unread, std::less<>> unread_;
};

}  // namespace tavo
