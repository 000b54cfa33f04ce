#include "platform/linux/system/ProcessInfo.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

// Larger than any environment that exec(2) accepts with the usual stack limit of 8 MiB.
constexpr std::size_t kLargestEnvironment = std::size_t{4} << 20;  // bytes

std::string procFile(pid_t process, const char* name) {
    return "/proc/" + std::to_string(process) + '/' + name;
}

// The bytes of the file, at most one block more than `limit`. stat(2) reports no size for files in
// /proc.
std::string contents(const std::string& path, std::size_t limit) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string bytes;
    std::array<char, 16384> block;
    while (file.valid() && bytes.size() < limit) {
        const ssize_t got = ::read(file.get(), block.data(), block.size());
        if (got > 0) {
            bytes.append(block.data(), static_cast<std::size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            break;
        }
    }
    return bytes;
}

// The value of a variable in a list of "NAME=value" that are each followed by a NUL.
std::string_view variable(std::string_view list, std::string_view name) {
    while (!list.empty()) {
        const std::size_t end = list.find('\0');
        const std::string_view item = list.substr(0, end);
        if (item.size() > name.size() && item.starts_with(name) && item[name.size()] == '=') {
            return item.substr(name.size() + 1);
        }
        list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    }
    return {};
}

// /proc/PID/stat from its third field, the state, on; empty when there is no such process.
std::string fieldsFromState(pid_t process) {
    const std::string stat = process > 0 ? contents(procFile(process, "stat"), 4096) : "";
    // The second field is the program's name in parentheses, which may have spaces and parentheses
    // itself: its end is the last one.
    const std::size_t end = stat.rfind(')');
    return end == std::string::npos || end + 2 >= stat.size() ? std::string()
                                                              : stat.substr(end + 2);
}

bool hasEnded(const std::string& fields) {
    return fields.empty() || fields.front() == 'Z' || fields.front() == 'X';
}

// A field by its number in proc(5), which counts from 1.
std::optional<std::uint64_t> field(const std::string& fieldsFromState, int number) {
    constexpr int kState = 3;
    std::size_t begin = 0;
    for (int i = kState; i < number; ++i) {
        begin = fieldsFromState.find(' ', begin);
        if (begin == std::string::npos) {
            return std::nullopt;
        }
        ++begin;
    }
    std::uint64_t value = 0;
    const auto parsed = std::from_chars(fieldsFromState.data() + begin,
                                        fieldsFromState.data() + fieldsFromState.size(), value);
    return parsed.ec == std::errc() ? std::optional(value) : std::nullopt;
}

// Programs that run another one, wait for it, and have no window. Sorted. env and nice are missing
// because they become the other program by exec(2); interpreters are missing because a program in
// Python more likely has windows itself.
constexpr auto kWrappers = std::to_array<std::string_view>({
    "ash",
    "bash",
    "busybox",
    "csh",
    "dash",
    "dbus-run-session",
    "fish",
    "ksh",
    "ksh93",
    "mksh",
    "sh",
    "strace",
    "systemd-inhibit",
    "tcsh",
    "timeout",
    "yash",
    "zsh",
});
static_assert(std::is_sorted(kWrappers.begin(), kWrappers.end()));

bool isWrapper(pid_t process) {
    const std::string program = processExecutable(process).value_or("");
    return std::binary_search(kWrappers.begin(), kWrappers.end(),
                              std::string_view(program).substr(program.rfind('/') + 1));
}

}  // namespace

std::optional<std::uint64_t> processStartTime(pid_t process) {
    const std::string fields = fieldsFromState(process);
    return hasEnded(fields) ? std::nullopt : field(fields, 22);
}

pid_t processParent(pid_t process) {
    return static_cast<pid_t>(field(fieldsFromState(process), 4).value_or(0));
}

bool isOwnProcess(pid_t process) {
    struct stat facts = {};
    return process > 0 && ::stat(("/proc/" + std::to_string(process)).c_str(), &facts) == 0 &&
           facts.st_uid == ::geteuid();
}

std::optional<std::string> processExecutable(pid_t process) {
    if (process <= 0) {
        return std::nullopt;
    }
    const std::string link = procFile(process, "exe");
    std::string path(4096, '\0');
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    if (length <= 0) {
        return std::nullopt;
    }
    path.resize(static_cast<std::size_t>(length));
    constexpr std::string_view kDeleted = " (deleted)";
    struct stat facts = {};
    // The kernel adds " (deleted)" to the path of a removed file, but a file may also really be
    // called so.
    if (path.ends_with(kDeleted) && ::stat(link.c_str(), &facts) == 0 && facts.st_nlink == 0) {
        path.resize(path.size() - kDeleted.size());
    }
    return path;
}

std::string processDesktopFile(pid_t process) {
    if (process <= 0) {
        return {};
    }
    const std::string environment = contents(procFile(process, "environ"), kLargestEnvironment);
    if (variable(environment, "GIO_LAUNCHED_DESKTOP_FILE_PID") != std::to_string(process)) {
        return {};
    }
    return std::string(variable(environment, "GIO_LAUNCHED_DESKTOP_FILE"));
}

pid_t sessionLeader(pid_t process) {
    return process > 0 ? std::max(::getsid(process), 0) : 0;
}

bool isWrappedBy(pid_t process, pid_t wrapper) {
    // Ends the loop if processes get new parents meanwhile; real wrappers are a few levels deep.
    constexpr int kDeepest = 16;
    pid_t ancestor = process;
    for (int depth = 0; depth < kDeepest && ancestor > 1; ++depth) {
        ancestor = processParent(ancestor);
        if (!isWrapper(ancestor)) {
            break;
        }
        if (ancestor == wrapper) {
            return true;
        }
    }
    return false;
}

}  // namespace tavo
