#include "platform/posix/PosixSpawn.h"

#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include <spawn.h>

namespace tavo {
namespace {

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        result.push_back(const_cast<char*>(text.c_str()));
    }
    result.push_back(nullptr);
    return result;
}

// Closes our own descriptors in the child. glibc 2.34 and FreeBSD have addclosefrom_np; macOS has
// the attribute POSIX_SPAWN_CLOEXEC_DEFAULT instead.
int addCloseOwnDescriptors(posix_spawn_file_actions_t* actions) {
    constexpr int kFirstOwnDescriptor = 3;
    return posix_spawn_file_actions_addclosefrom_np(actions, kFirstOwnDescriptor);
}

// glibc 2.29, musl, FreeBSD and macOS have addchdir_np; POSIX has had it as addchdir since 2024.
int addWorkingDirectory(posix_spawn_file_actions_t* actions, const std::string& folder) {
    return posix_spawn_file_actions_addchdir_np(actions, folder.c_str());
}

class Actions {
public:
    Actions() { posix_spawn_file_actions_init(&actions_); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;
    ~Actions() { posix_spawn_file_actions_destroy(&actions_); }

    // Duplicates the output first: its descriptor may be 0, 1 or 2, which the other actions
    // replace.
    int prepare(const SpawnRequest& request) {
        int failure = 0;
        const auto add = [&failure](int result) { failure = failure != 0 ? failure : result; };
        if (request.output >= 0) {
            add(posix_spawn_file_actions_adddup2(&actions_, request.output, STDOUT_FILENO));
            add(posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY,
                                                 0));
        }
        add(posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        add(addCloseOwnDescriptors(&actions_));
        if (!request.workingDirectory.empty()) {
            add(addWorkingDirectory(&actions_, request.workingDirectory));
        }
        return failure;
    }

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

class Attributes {
public:
    Attributes() { posix_spawnattr_init(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    ~Attributes() { posix_spawnattr_destroy(&attributes_); }

    int prepare(SpawnRequest::Group group) {
        // sigfillset() would leave out two signals of glibc's own, which would then be ignored in
        // the child.
        sigset_t signals;
        std::memset(&signals, 0xff, sizeof signals);
        int failure = posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        failure = failure != 0 ? failure : posix_spawnattr_setsigmask(&attributes_, &signals);
        int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        flags |=
            group == SpawnRequest::Group::ownSession ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
        return failure != 0 ? failure
                            : posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
};

}  // namespace

int spawnProgram(const SpawnRequest& request, pid_t& process) {
    Actions actions;
    Attributes attributes;
    if (const int failure = actions.prepare(request); failure != 0) {
        return failure;
    }
    if (const int failure = attributes.prepare(request.group); failure != 0) {
        return failure;
    }
    std::vector<std::string> arguments = {request.executable};
    arguments.insert(arguments.end(), request.arguments.begin(), request.arguments.end());
    return posix_spawn(&process, request.executable.c_str(), actions.get(), attributes.get(),
                       pointers(arguments).data(), pointers(request.environment).data());
}

}  // namespace tavo
