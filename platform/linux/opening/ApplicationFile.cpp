#include "platform/linux/opening/ApplicationFile.h"

#include <cerrno>
#include <filesystem>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include <gio/gio.h>

#include "platform/linux/bundles/BundleFolder.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/opening/ExecKey.h"
#include "platform/linux/opening/LaunchCheck.h"
#include "platform/linux/opening/LaunchErrorTexts.h"
#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

// The error for a `path` that stat(2) refused with the errno value `code`. A symbolic link that
// leads nowhere, or to itself, counts as a missing application.
Error unreachable(const std::string& path, int code) {
    if (code != EACCES) {
        return messages::applicationMissing(path);
    }
    return isDesktopFileName(path) ? messages::entryNotReadable(path, code)
                                   : messages::applicationNotReadable(path, code);
}

bool isUsableFolder(const std::string& path) {
    std::error_code unreachable;
    return std::filesystem::is_directory(path, unreachable) && ::access(path.c_str(), X_OK) == 0;
}

// The name of the service that the entry at `path` may activate: the file's name without
// ".desktop". Empty when that is no well-known bus name.
std::string busNameAt(const std::string& path) {
    const std::string name(withoutEntrySuffix(path).substr(path.rfind('/') + 1));
    const bool wellKnown = g_dbus_is_name(name.c_str()) != FALSE && name.front() != ':';
    return wellKnown ? name : std::string();
}

Result<ApplicationFile> readEntry(const std::string& path, std::span<const std::string> languages) {
    const auto bytes = readBoundedFile(path, kLargestDesktopEntry);
    if (const auto* const failure = std::get_if<FileFailure>(&bytes)) {
        return failure->code == ENOENT ? messages::applicationMissing(path)
                                       : messages::entryNotReadable(path, failure->code);
    }
    auto entry = parseDesktopEntry(std::get<std::string>(bytes), languages);
    if (!entry || entry->type != "Application") {
        return messages::entryInvalid(path);
    }
    std::string busName = entry->dbusActivatable ? busNameAt(path) : std::string();
    return ApplicationFile{path, std::nullopt, *std::move(entry), std::move(busName)};
}

Result<ProgramToStart> bundleProgram(const ApplicationFile& file, const ExecutableLookup& lookup) {
    if (!file.bundle->executablePath) {
        return messages::bundleWithoutProgram(file.path);
    }
    const auto executable = checkProgram(lookup, *file.bundle->executablePath);
    if (!executable) {
        return executable.error();
    }
    return ProgramToStart{executable.value(), executable.value(), {}};
}

}  // namespace

Result<ApplicationFile> readApplicationFile(const std::string& path,
                                            std::span<const std::string> languages) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return unreachable(path, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return ApplicationFile{path, readBundleFolder(path).value_or(BundleFacts()), {}, {}};
    }
    return isDesktopFileName(path) ? readEntry(path, languages) : messages::notAnApplication(path);
}

Result<ProgramToStart> programToStart(const ApplicationFile& file, const ExecutableLookup& lookup,
                                      const std::string& address) {
    if (file.bundle) {
        return bundleProgram(file, lookup);
    }
    const DesktopEntry& entry = file.entry;
    if (entry.hidden) {
        return messages::entryHidden(file.path);
    }
    if (!entry.tryExec.empty()) {
        const auto found = findProgram(lookup, entry.tryExec, entry.path);
        if (!found) {
            return found.error();
        }
    }
    if (entry.exec.empty()) {
        return file.busName.empty()
                   ? Result<ProgramToStart>(messages::entryWithoutCommand(file.path))
                   : Result(ProgramToStart());
    }
    ProgramToStart start;
    start.program = programOf(entry.exec).value_or("");
    start.words = commandWords(entry, file.path, address);
    if (start.program.empty() || start.words.empty()) {
        return messages::entryCommandUnreadable(file.path, entry.exec);
    }
    const auto executable = checkProgram(lookup, start.program, entry.path);
    if (!executable) {
        return executable.error();
    }
    start.executable = executable.value();
    if (!entry.path.empty() && !isUsableFolder(entry.path)) {
        return messages::workingDirectoryMissing(start.program, entry.path);
    }
    return start;
}

}  // namespace tavo
