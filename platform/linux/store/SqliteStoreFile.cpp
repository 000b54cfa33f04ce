#include "platform/linux/store/SqliteStoreFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavo {
namespace {

using Kind = SqliteOutcome::Kind;

constexpr auto kBetweenTries = std::chrono::milliseconds(1);

// What SQLite keeps beside a database: https://www.sqlite.org/tempfiles.html
constexpr std::array<const char*, 3> kCompanions = {"-wal", "-shm", "-journal"};

SqliteOutcome refused(const std::string& what) {
    return {Kind::Refused, what + ": " + std::strerror(errno)};
}

bool exists(const std::string& file) {
    struct stat status {};
    return lstat(file.c_str(), &status) == 0;
}

bool hasBytes(const std::string& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 && status.st_size > 0;
}

std::string folderOf(const std::string& file) {
    return std::filesystem::path(file).parent_path().string();
}

// Where the companions lie: beside the file itself, not beside a link to it.
std::string resolved(const std::string& file) {
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(file.c_str(), nullptr),
                                                           &std::free);
    return path != nullptr ? path.get() : file;
}

bool hasLog(const std::string& file) {
    return hasBytes(file + "-wal") || hasBytes(file + "-journal");
}

// A database that cannot be written is never opened as if it could: SQLite would leave a log and
// its index there that nobody may write either.
SqliteOutcome writability(const std::string& file) {
    if (faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0) {
        return refused("it cannot be written");
    }
    if (faccessat(AT_FDCWD, folderOf(file).c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        return refused("its folder cannot be written");
    }
    return {};
}

// So that the name itself survives a power failure.
void syncFolder(const std::string& folder) {
    const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle >= 0) {
        fsync(handle);
        ::close(handle);
    }
}

// Missing folders are for the owner alone, as the XDG Base Directory Specification has it.
bool makeFolders(const std::string& folder) {
    if (mkdir(folder.c_str(), 0700) != 0) {
        if (errno == EEXIST) {
            return true;
        }
        const std::string parent = folderOf(folder);
        if (errno != ENOENT || parent == folder || !makeFolders(parent) ||
            (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)) {
            return false;
        }
    }
    syncFolder(folderOf(folder));
    return true;
}

// Held while a store is made or moved aside, so that of two processes that find the same ruin
// the second does not move the first one's new store. Given up by closing, also by dying.
class FolderLock {
public:
    FolderLock(const std::string& folder, Deadline until)
        : handle_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        while (handle_ >= 0 && flock(handle_, LOCK_EX | LOCK_NB) != 0) {
            if (errno != EWOULDBLOCK && errno != EINTR) {
                return;  // a file system without locks: better unguarded than no store
            }
            if (std::chrono::steady_clock::now() >= until) {
                busy_ = true;
                return;
            }
            std::this_thread::sleep_for(kBetweenTries);
        }
    }
    ~FolderLock() {
        if (handle_ >= 0) {
            ::close(handle_);
        }
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    [[nodiscard]] bool busy() const { return busy_; }

private:
    int handle_;
    bool busy_ = false;
};

std::string dated(const std::string& file, const std::string& what) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H-%M-%S", &local);
    return file + "." + what + "-" + text.data();
}

bool isFree(const std::string& name) {
    for (const char* const companion : kCompanions) {
        if (exists(name + companion)) {
            return false;
        }
    }
    return !exists(name);
}

std::string freeName(const std::string& file, const std::string& what) {
    const std::string name = dated(file, what);
    std::string candidate = name;
    for (int n = 2; !isFree(candidate); ++n) {
        candidate = name + "-" + std::to_string(n);
    }
    return candidate;
}

enum class Aside { Everything, LogOnly };

// Under the folder's lock. A log without a byte in it, and the index of one, are just removed.
SqliteOutcome moveAside(const std::string& file, Aside what, const std::string& reason) {
    if (what == Aside::LogOnly && !hasBytes(file + "-wal")) {
        unlink((file + "-wal").c_str());
        unlink((file + "-shm").c_str());
        return {};
    }
    std::vector<std::string> suffixes = {"-wal", "-shm"};
    if (what == Aside::Everything) {
        suffixes.insert(suffixes.begin(), {"", "-journal"});
    }
    const std::string name = freeName(file, "unreadable");
    for (const std::string& suffix : suffixes) {
        if (std::rename((file + suffix).c_str(), (name + suffix).c_str()) != 0 && errno != ENOENT) {
            return refused(reason + "; it cannot be put aside");
        }
    }
    syncFolder(folderOf(file));
    std::fprintf(stderr, "tavolauncher: put aside %s%s as %s: %s\n", file.c_str(),
                 what == Aside::LogOnly ? "-wal" : "", name.c_str(), reason.c_str());
    return {};
}

}  // namespace

SqliteStoreFile::SqliteStoreFile(const std::string& file) {
    if (!file.empty()) {
        std::error_code ignored;
        file_ = std::filesystem::absolute(file, ignored).string();
    }
}

std::optional<SqliteStoreFile::Identity> SqliteStoreFile::identityOf(const std::string& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        return std::nullopt;
    }
    const std::int64_t changed =
        std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
    return Identity{status.st_dev, status.st_ino, status.st_mode, status.st_size, changed};
}

std::optional<SqliteRow> SqliteStoreFile::read(std::string_view key) {
    const auto now = std::chrono::steady_clock::now();
    const Deadline until = locked_ ? now : now + kReadPatience;
    std::optional<SqliteRow> row;
    SqliteOutcome outcome = connect(until);
    if (outcome.done()) {
        outcome = table_->read(key, row, until);
    }
    locked_ = outcome.kind == Kind::Busy;
    remember(key, outcome.done() && logLeftOut_ ? writing_ : outcome);
    // Only a connection that takes part in the locking sees what others write.
    if (!outcome.done() || table_->isReadOnly()) {
        close();
    }
    return row;
}

std::optional<std::string> SqliteStoreFile::write(std::string_view key, const SqliteRow& row,
                                                  Deadline until) {
    if (file_.empty()) {
        return "there is no home folder";
    }
    SqliteOutcome outcome;
    // Again when the file went away under the write, or turned out to be damaged in the midst of
    // it: a new look then finds out what to do.
    for (int attempt = 0; attempt < 3; ++attempt) {
        outcome = connectToWrite(until);
        if (outcome.done()) {
            outcome = keepUnread(key, row, until);
        }
        if (outcome.done()) {
            outcome = table_->write(key, row, until);
        }
        if (outcome.done()) {
            const std::optional<Identity> now = identityOf(file_);
            if (now && now->sameFile(identity_)) {
                identity_ = *now;
                if (const auto found = unread_.find(key); found != unread_.end()) {
                    unread_.erase(found);
                }
                return std::nullopt;
            }
            outcome = {Kind::NotAStore, "the file is being replaced"};
        }
        close();
        if (outcome.kind != Kind::NotAStore) {
            break;
        }
    }
    return outcome.reason;
}

// What is no store now may have been caught while somebody wrote it anew.
void SqliteStoreFile::remember(std::string_view key, const SqliteOutcome& outcome) {
    const auto found = unread_.find(key);
    if (outcome.done() || outcome.kind == Kind::Blank) {
        if (found != unread_.end()) {
            unread_.erase(found);
        }
    } else if (found != unread_.end()) {
        found->second.reason = outcome.reason;
    } else {
        unread_.emplace(key, Unread{outcome.reason, std::nullopt});
    }
}

// Done when `row` may take the place of what is stored under `key`. One copy serves all keys.
SqliteOutcome SqliteStoreFile::keepUnread(std::string_view key, const SqliteRow& row,
                                          Deadline until) {
    const auto found = unread_.find(key);
    if (found == unread_.end()) {
        return {};
    }
    std::optional<SqliteRow> stored;
    SqliteOutcome outcome = table_->read(key, stored, until);
    if (!outcome.done() || !stored || stored == row || stored == found->second.kept) {
        return outcome;
    }
    std::vector<std::optional<SqliteRow>> rows;
    for (const auto& [name, unread] : unread_) {
        outcome = table_->read(name, rows.emplace_back(), until);
        if (!outcome.done()) {
            return outcome;
        }
    }
    outcome = keepCopy(found->second.reason, until);
    if (outcome.done()) {
        auto next = rows.begin();
        for (auto& [name, unread] : unread_) {
            unread.kept = std::move(*next++);
        }
    }
    return outcome;
}

SqliteOutcome SqliteStoreFile::keepCopy(const std::string& why, Deadline until) {
    const std::string file = resolved(file_);
    std::string name;
    int handle = -1;
    do {
        name = freeName(file, "unread");
        handle = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    } while (handle < 0 && errno == EEXIST);
    if (handle < 0) {
        return refused("a copy of what could not be read cannot be made");
    }
    SqliteOutcome outcome = table_->copyInto(name, until);
    if (outcome.done() && fsync(handle) != 0) {
        outcome = refused("it cannot reach the disk");
    }
    ::close(handle);
    if (!outcome.done()) {
        unlink(name.c_str());
        outcome.reason = "a copy of what could not be read cannot be made: " + outcome.reason;
        return outcome;
    }
    syncFolder(folderOf(file));
    std::fprintf(stderr,
                 "tavolauncher: kept a copy of %s as %s: a value about to be replaced could not be "
                 "read before: %s\n",
                 file_.c_str(), name.c_str(), why.c_str());
    return {};
}

// Done when table_ is open on what the file holds now.
SqliteOutcome SqliteStoreFile::connect(Deadline until) {
    const std::optional<Identity> identity = identityOf(file_);
    if (identity && table_ && *identity == identity_) {
        return {};
    }
    if (!identity) {
        SqliteOutcome outcome =
            errno == ENOENT ? SqliteOutcome{Kind::Blank, {}} : refused("it cannot be reached");
        close();
        return outcome;
    }
    close();
    if (!S_ISREG(identity->mode)) {
        return {Kind::NotAStore, "it is not a file"};
    }
    // SQLite would take an empty file for a new database and drop whatever log lies beside it.
    if (identity->size == 0) {
        return {Kind::Blank, {}};
    }
    return open(*identity, until);
}

// As much of the file as can be read: with its log; else, where that cannot be (not writable, or a
// log that belongs to another file), the way it lies there. writing_ then says why.
SqliteOutcome SqliteStoreFile::open(const Identity& identity, Deadline until) {
    using Access = SqliteTable::Access;
    const std::string file = resolved(file_);
    writing_ = writability(file);
    const bool mayWrite = writing_.done();
    logLeftOut_ = false;
    if (mayWrite) {
        writing_ = openAs(Access::ReadWrite, identity, until);
        if (writing_.kind != Kind::Refused && writing_.kind != Kind::NotAStore) {
            return writing_;
        }
    } else if (hasLog(file)) {
        SqliteOutcome outcome = openAs(Access::ReadOnly, identity, until);
        if (outcome.done() || outcome.kind == Kind::Busy) {
            return outcome;
        }
    }
    const SqliteOutcome alone = openAs(Access::Immutable, identity, until);
    logLeftOut_ = alone.done() && writing_.kind == Kind::Refused && hasLog(file);
    return alone.done() || !(mayWrite || hasLog(file)) ? alone : writing_;
}

SqliteOutcome SqliteStoreFile::openAs(SqliteTable::Access access, const Identity& identity,
                                      Deadline until) {
    SqliteOutcome cutShort = {Kind::NotAStore, "it is cut short"};
    // With a log beside it, what is missing may still be on its way.
    const bool logged = hasLog(resolved(file_));
    // Less than the smallest page. SQLite would take a single byte for an empty file.
    if (!logged && identity.size < 512) {
        return cutShort;
    }
    auto table = std::make_unique<SqliteTable>();
    SqliteOutcome outcome = table->open(file_, access, until);
    if (!outcome.done()) {
        return outcome;
    }
    // SQLite reads what is missing of the last page as zeros.
    if (!logged && identity.size % table->pageSize() != 0) {
        return cutShort;
    }
    table_ = std::move(table);
    identity_ = identity;
    return {};
}

// Done when table_ is open and a write may begin.
SqliteOutcome SqliteStoreFile::connectToWrite(Deadline until) {
    SqliteOutcome outcome = connect(until);
    if (outcome.done()) {
        outcome = writing_;
    }
    switch (outcome.kind) {
        case Kind::Done:
            return table_->prepareWriting(until);
        case Kind::Blank:
        case Kind::NotAStore:
            return makeStore(until);
        case Kind::Busy:
        case Kind::Refused:
            break;
    }
    return outcome;
}

SqliteOutcome SqliteStoreFile::makeStore(Deadline until) {
    close();
    const std::string folder = folderOf(file_);
    if (!makeFolders(folder)) {
        return refused("its folder cannot be made");
    }
    const FolderLock lock(folder, until);
    if (lock.busy()) {
        return {Kind::Busy, "another process has locked its folder"};
    }
    // Once more under the lock: another process may have made it meanwhile.
    SqliteOutcome outcome = connect(until);
    const bool readable = outcome.done();
    if (readable) {
        outcome = writing_;
    }
    if (outcome.kind == Kind::NotAStore) {
        close();
        const std::string reason = outcome.reason;
        outcome = readable ? moveAside(resolved(file_), Aside::LogOnly, reason)
                           : moveAside(file_, Aside::Everything, reason);
        if (outcome.done() && readable) {
            outcome = connect(until);
            outcome = outcome.done() ? writing_ : outcome;
        } else if (outcome.done()) {
            outcome = {Kind::Blank, {}};
        }
    }
    if (outcome.kind == Kind::Blank) {
        outcome = createTable(until);
    }
    return outcome.done() ? table_->prepareWriting(until) : outcome;
}

// In a file that is not there yet, or has nothing in it. Under the folder's lock.
SqliteOutcome SqliteStoreFile::createTable(Deadline until) {
    close();
    const std::optional<Identity> found = identityOf(file_);
    if (!found || found->size == 0) {
        // The log of a file that is gone: some process may still have it open, and nothing
        // else may ever be read through it.
        SqliteOutcome outcome =
            moveAside(resolved(file_), Aside::LogOnly, "the store it belongs to is gone");
        if (!outcome.done()) {
            return outcome;
        }
    }
    if (!found) {
        const int handle = ::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (handle < 0) {
            return refused("it cannot be made");
        }
        ::close(handle);
        syncFolder(folderOf(file_));
    }
    const std::optional<Identity> made = identityOf(file_);
    if (!made) {
        return refused("it went away");
    }
    auto table = std::make_unique<SqliteTable>();
    SqliteOutcome outcome = table->open(file_, SqliteTable::Access::ReadWrite, until);
    if (outcome.kind == Kind::Blank) {
        outcome = table->create(until);
    }
    if (outcome.done()) {
        table_ = std::move(table);
        identity_ = *made;
        writing_ = {};
        logLeftOut_ = false;
    }
    return outcome;
}

void SqliteStoreFile::close() {
    table_.reset();
}

}  // namespace tavo
