#include "platform/linux/opening/DesktopEntryCheck.h"

#include <cerrno>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include <gio/gio.h>

#include "platform/linux/entries/DesktopEntry.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/entries/ExecutableLookup.h"
#include "platform/linux/opening/LaunchErrors.h"
#include "platform/linux/opening/ProgramCheck.h"
#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

Error unreadable(const std::string& path, int code) {
    return code == ENOENT ? messages::applicationMissing(path)
                          : messages::entryNotReadable(path, code);
}

bool isUsableFolder(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

// Whether the command word `program` would run.
Result<std::string> checkProgram(const std::string& program, const std::string& searchPath,
                                 const std::string& workingDirectory) {
    Result<std::string> found = findProgram(program, searchPath, workingDirectory);
    if (found) {
        if (const auto failure = whyScriptCannotRun(found.value(), searchPath)) {
            return *failure;
        }
    }
    return found;
}

}  // namespace

Result<EntryKeys> readEntryKeys(const std::string& path, std::span<const std::string> languages) {
    const auto bytes = readBoundedFile(path, kLargestDesktopEntry);
    if (const auto* const failure = std::get_if<FileFailure>(&bytes)) {
        return unreadable(path, failure->code);
    }
    const auto entry = parseDesktopEntry(std::get<std::string>(bytes), languages);
    if (!entry || entry->type != "Application") {
        return messages::entryInvalid(path);
    }
    EntryKeys keys;
    keys.name = entry->name;
    keys.icon = entry->icon;
    keys.command = entry->exec;
    keys.tryExec = entry->tryExec;
    keys.workingDirectory = entry->path;
    keys.hidden = entry->hidden;
    keys.terminal = entry->terminal;
    keys.startupNotify = entry->startupNotify;
    keys.busActivatable = entry->dbusActivatable && !entryBusName(path).empty();
    return keys;
}

std::string entryBusName(const std::string& path) {
    if (!isDesktopFileName(path)) {
        return {};
    }
    const std::string name(withoutEntrySuffix(path).substr(path.rfind('/') + 1));
    const bool wellKnown = g_dbus_is_name(name.c_str()) != FALSE && name.front() != ':';
    return wellKnown ? name : std::string();
}

Result<StartableEntry> checkEntry(const std::string& path, const std::string& searchPath,
                                  std::span<const std::string> languages) {
    const Result<EntryKeys> read = readEntryKeys(path, languages);
    if (!read) {
        return read.error();
    }
    StartableEntry entry;
    entry.keys = read.value();
    const EntryKeys& keys = entry.keys;
    if (keys.hidden) {
        return messages::entryHidden(path);
    }
    if (!keys.tryExec.empty()) {
        const auto found = findProgram(keys.tryExec, searchPath, keys.workingDirectory);
        if (!found) {
            return found.error();
        }
    }
    if (keys.command.empty()) {
        return keys.busActivatable ? Result(std::move(entry))
                                   : Result<StartableEntry>(messages::entryWithoutCommand(path));
    }
    entry.program = programOf(keys.command).value_or("");
    if (entry.program.empty()) {
        return messages::entryCommandUnreadable(path, keys.command);
    }
    const auto executable = checkProgram(entry.program, searchPath, keys.workingDirectory);
    if (!executable) {
        return executable.error();
    }
    entry.executable = executable.value();
    if (!keys.workingDirectory.empty() && !isUsableFolder(keys.workingDirectory)) {
        return messages::workingDirectoryMissing(entry.program, keys.workingDirectory);
    }
    return entry;
}

}  // namespace tavo
