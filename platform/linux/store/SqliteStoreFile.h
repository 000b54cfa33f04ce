// The one file of the defaults store, through everything that can happen to it: it is not there
// yet, appears, is replaced, deleted, locked, not writable, damaged, or never was a store.
//
// Keeps one connection open. Before each use it checks with one stat(2) that the connection still
// leads to the file of that name. Reads create nothing. The first write makes the folders (0700)
// and the file (0600; SQLite gives its journal the same permissions). What is not a store reads as
// empty, and the first write moves it aside under a dated name
// ("defaults.sqlite.unreadable-2026-11-21T10-15-30"). A file that is merely locked, unreadable or
// out of space never moves. A key that could not be read then may be written later by a caller that
// took it for absent, so the whole store is copied under a dated name
// ("defaults.sqlite.unread-2026-11-21T10-15-30") before that write. One thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "platform/linux/store/SqliteDatabase.h"

namespace tavo {

class SqliteStoreFile {
public:
    // How long a lock of another process is waited for.
    static constexpr std::chrono::seconds kPatience{2};
    static constexpr std::chrono::milliseconds kShortPatience{100};

    // With an empty name nothing can be read or written.
    explicit SqliteStoreFile(const std::string& file);

    // The row of `key`; absent also when the file cannot be read now. Waits for a lock for
    // kPatience; after a wait without success the next reads wait for kShortPatience, until one of
    // them succeeds.
    std::optional<SqliteRow> read(std::string_view key);

    // The row is on disk when the outcome is Done. Waits for a lock until `until`.
    SqliteOutcome write(std::string_view key, const SqliteRow& row, Deadline until);

    [[nodiscard]] const std::string& name() const { return file_; }

private:
    // Tells whether the name still leads to the same file with the content last seen.
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
        mode_t mode = 0;
        off_t size = 0;
        std::int64_t modified = 0;  // nanoseconds

        [[nodiscard]] bool sameFile(const Identity& other) const {
            return device == other.device && inode == other.inode;
        }
        bool operator==(const Identity&) const = default;
    };
    static std::optional<Identity> identityOf(const std::string& file);

    enum class Missing { Report, Create };  // what open() does without a table

    SqliteOutcome connect(Deadline until);
    SqliteOutcome open(const Identity& identity, Deadline until, Missing missing);
    SqliteOutcome connectToWrite(Deadline until);
    SqliteOutcome putAside(Deadline until);
    SqliteOutcome create(Deadline until);
    SqliteOutcome keepCopy(Deadline until);
    void close() { table_.reset(); }

    std::string file_;
    std::unique_ptr<SqliteDatabase> table_;
    Identity identity_;    // of the file behind table_
    bool locked_ = false;  // the last read gave up waiting
    std::set<std::string, std::less<>>
        unread_;  // the keys that could not be read, nor copied since
};

}  // namespace tavo
