#include "platform/linux/entries/XdgApplicationSource.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <iterator>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/entries/DesktopEntry.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/entries/ExecutableLookup.h"
#include "platform/posix/FileDescriptor.h"
#include "support/Text.h"

namespace tavo {
namespace {

// Limits for folders that symbolic links multiply; no real menu comes near them.
constexpr std::size_t kDeepestFolder = 32;
constexpr std::size_t kMostFolders = 10'000;

constexpr std::size_t kWorthASecondThread = 500;  // files
constexpr std::size_t kShare = 32;                // files that a thread takes at a time

// The file that a desktop-file id stands for.
struct EntryFile {
    std::size_t dataDir;
    std::string name;  // relative to the data folder's "applications"
};

// Finds the file of each desktop-file id, without opening any.
class EntryFiles {
public:
    // `applications` is the open folder "applications" of the data folder; an invalid one adds
    // nothing. Call it for the most important data folder first.
    void addDataDir(std::size_t dataDir, const FileDescriptor& applications) {
        dataDir_ = dataDir;
        folders_ = 0;
        if (const int copy = fcntl(applications.get(), F_DUPFD_CLOEXEC, 0); copy >= 0) {
            listFolder(copy, "", "");
        }
    }

    [[nodiscard]] const std::vector<EntryFile>& files() const { return files_; }

private:
    using Identity = std::pair<dev_t, ino_t>;

    // Lists `folder`, and closes it. `path` and `idPrefix` go before the names in it, for instance
    // "kde/" and "kde-".
    void listFolder(int folder, const std::string& path, const std::string& idPrefix);
    void listEntry(int folder, const dirent& entry, const std::string& path,
                   const std::string& idPrefix);

    void addFile(std::string id, std::string name) {
        const auto [known, isNew] = byId_.try_emplace(std::move(id), files_.size());
        if (isNew) {
            files_.push_back({dataDir_, std::move(name)});
        } else if (EntryFile& file = files_[known->second]; file.dataDir == dataDir_) {
            // "a/b.desktop" and "a-b.desktop" have the same id. As in GIO, the last one listed
            // counts.
            file.name = std::move(name);
        }
    }

    std::vector<EntryFile> files_;
    std::unordered_map<std::string, std::size_t> byId_;
    std::vector<Identity> ancestors_;  // of the folder being listed, itself included
    std::size_t dataDir_ = 0;
    std::size_t folders_ = 0;
};

void EntryFiles::listFolder(int folder, const std::string& path, const std::string& idPrefix) {
    struct stat facts {};
    const bool known = fstat(folder, &facts) == 0;
    const Identity identity(facts.st_dev, facts.st_ino);
    const bool isCircle =
        std::find(ancestors_.begin(), ancestors_.end(), identity) != ancestors_.end();
    DIR* const stream =
        known && !isCircle && ancestors_.size() < kDeepestFolder && folders_ < kMostFolders
            ? fdopendir(folder)
            : nullptr;
    if (stream == nullptr) {
        close(folder);
        return;
    }
    ++folders_;
    ancestors_.push_back(identity);
    while (const dirent* const entry = readdir(stream)) {
        listEntry(folder, *entry, path, idPrefix);
    }
    ancestors_.pop_back();
    closedir(stream);
}

void EntryFiles::listEntry(int folder, const dirent& entry, const std::string& path,
                           const std::string& idPrefix) {
    const std::string_view name = entry.d_name;
    if (name == "." || name == "..") {
        return;
    }
    if (isDesktopFileName(name)) {
        addFile(idPrefix + entry.d_name, path + entry.d_name);
        return;
    }
    if (entry.d_type == DT_DIR || entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN) {
        const int inner =
            openat(folder, entry.d_name, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
        if (inner >= 0) {
            listFolder(inner, path + entry.d_name + '/', idPrefix + entry.d_name + '-');
        }
    }
}

// Whether the entry is shown in a session of `desktops`. The first of them that OnlyShowIn or
// NotShowIn names decides.
bool isShownIn(const std::vector<std::string>& desktops, const DesktopEntry& entry) {
    const auto names = [](const std::optional<std::vector<std::string>>& list,
                          const std::string& desktop) {
        return list && std::find(list->begin(), list->end(), desktop) != list->end();
    };
    for (const std::string& desktop : desktops) {
        if (names(entry.onlyShowIn, desktop)) {
            return true;
        }
        if (names(entry.notShowIn, desktop)) {
            return false;
        }
    }
    return !entry.onlyShowIn;
}

// Whether the programs of TryExec and Exec can be run. `program` is the first word of Exec; absent
// when that is no command line.
bool programsExist(const DesktopEntry& entry, const std::optional<std::string>& program,
                   ExecutableLookup& programs) {
    if (!entry.tryExec.empty() && !programs.finds(entry.tryExec, entry.path)) {
        return false;
    }
    return entry.exec.empty() || (program && programs.finds(*program, entry.path));
}

bool isListed(const DesktopEntry& entry, const std::vector<std::string>& desktops) {
    return entry.type == "Application" && !entry.hidden && !entry.noDisplay &&
           !entry.name.empty() && isShownIn(desktops, entry);
}

// The desktop-file id of the file `name` below "applications": "kde/a.desktop" is "kde-a.desktop".
std::string identifierOf(std::string name) {
    std::replace(name.begin(), name.end(), '/', '-');
    return name;
}

// The applications that one thread has found.
struct Found {
    std::vector<FoundApplication> applications;
    std::vector<ListedEntry> entries;  // of the same applications

    void append(Found&& more) {
        applications.insert(applications.end(), std::make_move_iterator(more.applications.begin()),
                            std::make_move_iterator(more.applications.end()));
        entries.insert(entries.end(), std::make_move_iterator(more.entries.begin()),
                       std::make_move_iterator(more.entries.end()));
    }
};

class XdgApplicationSource final : public ApplicationSource {
public:
    XdgApplicationSource(DesktopEntryEnvironment environment,
                         std::shared_ptr<DesktopEntryIndex> listed)
        : environment_(std::move(environment)), listed_(std::move(listed)) {}

    std::vector<FoundApplication> applications() override {
        std::vector<FileDescriptor> folders;
        EntryFiles entries;
        for (std::size_t i = 0; i < environment_.dataDirs.size(); ++i) {
            const std::string folder = environment_.dataDirs[i] + "/applications";
            folders.emplace_back(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            entries.addDataDir(i, folders.back());
        }
        Found found = read(entries.files(), folders);
        if (listed_) {
            listed_->replace(std::move(found.entries));
        }
        return std::move(found.applications);
    }

private:
    // With many files a second thread halves the time, most of which the kernel takes to open and
    // read them.
    Found read(const std::vector<EntryFile>& files,
               const std::vector<FileDescriptor>& folders) const {
        std::atomic<std::size_t> next = 0;
        std::future<Found> second;
        if (files.size() >= kWorthASecondThread) {
            second =
                std::async(std::launch::async, [&] { return readShares(files, folders, next); });
        }
        Found found = readShares(files, folders, next);
        if (second.valid()) {
            found.append(second.get());
        }
        return found;
    }

    // Reads `files` in shares until none is left. `next`, where the next share begins, is common to
    // both threads.
    Found readShares(const std::vector<EntryFile>& files,
                     const std::vector<FileDescriptor>& folders,
                     std::atomic<std::size_t>& next) const {
        Found found;
        ExecutableLookup programs(environment_.path);
        for (std::size_t start = next.fetch_add(kShare); start < files.size();
             start = next.fetch_add(kShare)) {
            const std::size_t end = std::min(start + kShare, files.size());
            for (std::size_t i = start; i < end; ++i) {
                const EntryFile& file = files[i];
                const auto entry = readDesktopEntry(folders[file.dataDir].get(), file.name.c_str(),
                                                    environment_.languages);
                if (entry && isListed(*entry, environment_.currentDesktops)) {
                    add(*entry, file, programs, found);
                }
            }
        }
        return found;
    }

    void add(const DesktopEntry& entry, const EntryFile& file, ExecutableLookup& programs,
             Found& found) const {
        const std::optional<std::string> program = programOf(entry.exec);
        std::string path = environment_.dataDirs[file.dataDir] + "/applications/" + file.name;
        if (!programsExist(entry, program, programs) || !isUtf8(path)) {
            return;
        }
        if (listed_) {
            found.entries.push_back(
                {identifierOf(file.name), path, entry.startupWmClass,
                 program ? program->substr(program->rfind('/') + 1) : std::string()});
        }
        found.applications.push_back({entry.name, std::move(path)});
    }

    const DesktopEntryEnvironment environment_;
    const std::shared_ptr<DesktopEntryIndex> listed_;
};

}  // namespace

std::unique_ptr<ApplicationSource> makeXdgApplicationSource(
    DesktopEntryEnvironment environment, std::shared_ptr<DesktopEntryIndex> listed) {
    return std::make_unique<XdgApplicationSource>(std::move(environment), std::move(listed));
}

}  // namespace tavo
