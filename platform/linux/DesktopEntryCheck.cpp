#include "platform/linux/DesktopEntryCheck.h"

#include <cerrno>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include <gio/gio.h>

#include "platform/linux/BoundedFile.h"
#include "platform/linux/OpeningMessages.h"
#include "platform/linux/ProgramCheck.h"

namespace tavo {
namespace {

constexpr std::size_t kLargestEntry = std::size_t{1} << 20;
constexpr std::string_view kSuffix = ".desktop";

using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;

std::string text(const KeyFile& file, const char* key) {
    const std::unique_ptr<char, decltype(&g_free)> value(
        g_key_file_get_string(file.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr), g_free);
    return value ? std::string(value.get()) : std::string();
}

bool flag(const KeyFile& file, const char* key) {
    return g_key_file_get_boolean(file.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != FALSE;
}

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

Result<EntryKeys> readEntryKeys(const std::string& path) {
    const auto bytes = readBoundedFile(path, kLargestEntry);
    if (const auto* const failure = std::get_if<FileFailure>(&bytes)) {
        return unreadable(path, failure->code);
    }
    const std::string& content = std::get<std::string>(bytes);
    const KeyFile file(g_key_file_new(), g_key_file_unref);
    if (g_key_file_load_from_data(file.get(), content.data(), content.size(), G_KEY_FILE_NONE,
                                  nullptr) == FALSE ||
        text(file, G_KEY_FILE_DESKTOP_KEY_TYPE) != G_KEY_FILE_DESKTOP_TYPE_APPLICATION) {
        return messages::entryInvalid(path);
    }
    EntryKeys keys;
    keys.command = text(file, G_KEY_FILE_DESKTOP_KEY_EXEC);
    keys.tryExec = text(file, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
    keys.workingDirectory = text(file, G_KEY_FILE_DESKTOP_KEY_PATH);
    keys.hidden = flag(file, G_KEY_FILE_DESKTOP_KEY_HIDDEN);
    keys.terminal = flag(file, G_KEY_FILE_DESKTOP_KEY_TERMINAL);
    keys.startupNotify = flag(file, G_KEY_FILE_DESKTOP_KEY_STARTUP_NOTIFY);
    keys.busActivatable =
        flag(file, G_KEY_FILE_DESKTOP_KEY_DBUS_ACTIVATABLE) && !entryBusName(path).empty();
    return keys;
}

std::string commandProgram(const std::string& command) {
    char** words = nullptr;
    if (g_shell_parse_argv(command.c_str(), nullptr, &words, nullptr) == FALSE) {
        return {};
    }
    std::string program = words[0];
    g_strfreev(words);
    return program;
}

std::string entryBusName(const std::string& path) {
    std::string name = path.substr(path.rfind('/') + 1);
    if (!name.ends_with(kSuffix)) {
        return {};
    }
    name.resize(name.size() - kSuffix.size());
    const bool wellKnown = g_dbus_is_name(name.c_str()) != FALSE && name.front() != ':';
    return wellKnown ? name : std::string();
}

Result<StartableEntry> checkEntry(const std::string& path, const std::string& searchPath) {
    const Result<EntryKeys> read = readEntryKeys(path);
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
    entry.program = commandProgram(keys.command);
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
