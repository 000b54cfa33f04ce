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

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

using Kind = SqliteOutcome::Kind;

SqliteOutcome refused(const std::string& what, int failure) {
    return {Kind::Refused, what + ": " + std::strerror(failure)};
}

std::string folderOf(const std::string& file) {
    return std::filesystem::path(file).parent_path().string();
}

// `file` without symbolic links: SQLite keeps its side files beside the file itself, not beside a
// link to it.
std::string resolved(const std::string& file) {
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(file.c_str(), nullptr),
                                                           &std::free);
    return path != nullptr ? path.get() : file;
}

// Whether the side files beside `file` are regular files, where they exist. SQLite would open a
// pipe too, and wait for its other end. https://www.sqlite.org/tempfiles.html
bool hasSoundSideFiles(const std::string& file) {
    for (const char* const suffix : {"-journal", "-wal"}) {
        struct stat status {};
        if (stat((file + suffix).c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
            return false;
        }
    }
    return true;
}

FileDescriptor openFolder(const std::string& folder) {
    return FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// Makes the missing folders, for the owner alone (XDG Base Directory Specification). The parent is
// synced so that the new name survives a power failure.
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
    fsync(openFolder(folderOf(folder)).get());
    return true;
}

// Locks the folder, until the descriptor is closed or the process ends. False when another process
// holds the lock until `until`. On a file system without such locks the lock counts as held.
bool lockFolder(const FileDescriptor& folder, Deadline until) {
    while (flock(folder.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= until) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A dated name that no file has yet. `what` tells why it is needed: "unreadable" or "unread".
std::string freeName(const std::string& file, const char* what) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H-%M-%S", &local);
    const std::string name = file + "." + what + "-" + date.data();
    std::string candidate = name;
    struct stat status {};
    for (int n = 2; lstat(candidate.c_str(), &status) == 0; ++n) {
        candidate = name + "-" + std::to_string(n);
    }
    return candidate;
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
    const std::int64_t modified =
        std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
    return Identity{status.st_dev, status.st_ino, status.st_mode, status.st_size, modified};
}

std::optional<SqliteRow> SqliteStoreFile::read(std::string_view key) {
    const auto now = std::chrono::steady_clock::now();
    const Deadline until = locked_ ? now + kShortPatience : now + kPatience;
    std::optional<SqliteRow> row;
    SqliteOutcome outcome = connect(until);
    if (outcome.done()) {
        outcome = table_->read(key, row, until);
    }
    locked_ = outcome.kind == Kind::Busy;
    if (outcome.kind == Kind::Busy || outcome.kind == Kind::Refused) {
        unread_.emplace(key);
    } else if (const auto known = unread_.find(key); known != unread_.end()) {
        unread_.erase(known);
    }
    if (!outcome.done()) {
        close();
    }
    return row;
}

SqliteOutcome SqliteStoreFile::write(std::string_view key, const SqliteRow& row, Deadline until) {
    if (file_.empty()) {
        return {Kind::Refused, "there is no home folder"};
    }
    SqliteOutcome outcome;
    // Tries again when the file was replaced during the write, or turned out to be damaged: a fresh
    // look then decides what to do.
    for (int attempt = 0; attempt < 3; ++attempt) {
        outcome = connectToWrite(until);
        if (outcome.done() && unread_.contains(key)) {
            outcome = keepCopy(until);
        }
        if (outcome.done()) {
            outcome = table_->write(key, row, until);
        }
        if (outcome.done()) {
            const std::optional<Identity> now = identityOf(file_);
            if (now && now->sameFile(identity_)) {
                identity_ = *now;
                return {};
            }
            outcome = {Kind::NotAStore, "the file is being replaced"};
        }
        close();
        if (outcome.kind != Kind::NotAStore) {
            break;
        }
    }
    return outcome;
}

// Done when table_ is open on what the file holds now.
SqliteOutcome SqliteStoreFile::connect(Deadline until) {
    const std::optional<Identity> identity = identityOf(file_);
    const int failure = errno;
    if (identity && table_ && *identity == identity_) {
        return {};
    }
    close();
    if (!identity && failure != ENOENT) {
        return refused("it cannot be reached", failure);
    }
    if (!identity || (S_ISREG(identity->mode) && identity->size == 0)) {
        return {Kind::Blank, {}};
    }
    return open(*identity, until, Missing::Report);
}

SqliteOutcome SqliteStoreFile::open(const Identity& identity, Deadline until, Missing missing) {
    if (!S_ISREG(identity.mode)) {
        return {Kind::NotAStore, "it is not a file"};
    }
    const std::string file = resolved(file_);
    if (!hasSoundSideFiles(file)) {
        return {Kind::Refused, "its journal is not a file"};
    }
    auto table = std::make_unique<SqliteDatabase>();
    SqliteOutcome outcome = table->open(file, until);
    if (outcome.kind == Kind::Blank && missing == Missing::Create) {
        outcome = table->create(until);
    }
    if (outcome.done()) {
        table_ = std::move(table);
        // Opening may change the file: it rolls back what a killed writer left unfinished.
        const std::optional<Identity> now = identityOf(file_);
        identity_ = now && now->sameFile(identity) ? *now : identity;
    }
    return outcome;
}

// Done when table_ is open and a write may begin.
SqliteOutcome SqliteStoreFile::connectToWrite(Deadline until) {
    if (table_ && table_->isReadOnly()) {
        close();
    }
    SqliteOutcome outcome = connect(until);
    if (outcome.kind == Kind::NotAStore) {
        outcome = putAside(until);
    }
    return outcome.kind == Kind::Blank ? create(until) : outcome;
}

// Renames the file, which is no store. The lock on the folder keeps a second process that found the
// same file from renaming the new store that this one makes.
SqliteOutcome SqliteStoreFile::putAside(Deadline until) {
    const FileDescriptor folder = openFolder(folderOf(file_));
    if (!lockFolder(folder, until)) {
        return {Kind::Busy, "another process has locked its folder"};
    }
    SqliteOutcome outcome = connect(until);
    if (outcome.kind != Kind::NotAStore) {
        return outcome;
    }
    const std::string name = freeName(file_, "unreadable");
    if (std::rename(file_.c_str(), name.c_str()) != 0) {
        return refused(outcome.reason + "; it cannot be put aside", errno);
    }
    std::fprintf(stderr, "tavolauncher: put aside %s as %s: %s\n", file_.c_str(), name.c_str(),
                 outcome.reason.c_str());
    return {Kind::Blank, {}};
}

// Copies the whole store, before a key is written that could not be read.
SqliteOutcome SqliteStoreFile::keepCopy(Deadline until) {
    const std::string name = freeName(file_, "unread");
    // SQLite would make the file readable for others. It accepts one that exists and is empty.
    if (!FileDescriptor(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600))
             .valid()) {
        return refused("no copy of what could not be read can be made", errno);
    }
    SqliteOutcome outcome = table_->copyTo(name, until);
    if (!outcome.done()) {
        ::unlink(name.c_str());
        return outcome;
    }
    unread_.clear();
    std::fprintf(stderr, "tavolauncher: kept %s, because %s could not be read for a while\n",
                 name.c_str(), file_.c_str());
    return {};
}

// Makes the table in a file that does not exist yet, or is empty. Two processes may do so at once.
SqliteOutcome SqliteStoreFile::create(Deadline until) {
    if (!makeFolders(folderOf(file_))) {
        return refused("its folder cannot be made", errno);
    }
    if (!identityOf(file_) &&
        !FileDescriptor(::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)).valid()) {
        return refused("it cannot be made", errno);
    }
    const std::optional<Identity> identity = identityOf(file_);
    if (!identity) {
        return refused("it went away", errno);
    }
    return open(*identity, until, Missing::Create);
}

}  // namespace tavo
