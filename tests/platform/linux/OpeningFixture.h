// A workspace over entries and bundles in a temporary folder.
#pragma once

#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>

#include <sys/wait.h>

#include "platform/linux/GioWorkspace.h"
#include "tests/platform/linux/ProcessFixture.h"

namespace tavo::processes {

// Sets one variable of this process for the length of a test.
class Variable {
public:
    Variable(std::string name, const std::string& value) : name_(std::move(name)) {
        if (const char* const before = std::getenv(name_.c_str())) {
            before_ = before;
        }
        ::setenv(name_.c_str(), value.c_str(), 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() {
        if (before_) {
            ::setenv(name_.c_str(), before_->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

private:
    std::string name_;
    std::optional<std::string> before_;
};

// How one opening was answered.
struct Answer {
    int calls = 0;
    std::optional<RunningApplication> running;
    std::optional<Error> error;

    // The error's text, or what there is instead.
    [[nodiscard]] std::string text() const {
        return error ? error->message : calls == 0 ? "(no answer)" : "(no error)";
    }
};

class Openings {
public:
    [[nodiscard]] OpenCompletion completion() const {
        return [shared = shared_](std::optional<RunningApplication> running,
                                  std::optional<Error> error) {
            const std::lock_guard lock(shared->mutex);
            ++shared->answer.calls;
            shared->answer.running = std::move(running);
            shared->answer.error = std::move(error);
            shared->changed.notify_all();
        };
    }

    // The answer once it is there.
    Answer wait() {
        std::unique_lock lock(shared_->mutex);
        shared_->changed.wait_for(lock, kPatience, [this] { return shared_->answer.calls > 0; });
        return shared_->answer;
    }

    // The answer now.
    Answer now() {
        const std::lock_guard lock(shared_->mutex);
        return shared_->answer;
    }

private:
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        Answer answer;
    };
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

// Programs that run on do so until the folder's pipe "end" is opened for writing.
class OpeningTest : public testing::Test {
protected:
    OpeningTest() : report_(folder_), home_(folder_.path("home")) {
        std::filesystem::create_directory(home_);
    }

    // What a program does last may come after its workspace has ended, which then no longer reaps
    // it; the next test is to find no children.
    ~OpeningTest() override {
        workspace_.reset();
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    // The settings with which workspaces are made; a test may change them before it opens.
    OpeningSettings settings() const {
        std::vector<std::string> variables;
        for (char** variable = environ; *variable != nullptr; ++variable) {
            const std::string text = *variable;
            if (!text.starts_with("HOME=") && !text.starts_with("DISPLAY=") &&
                !text.starts_with("WAYLAND_DISPLAY=")) {
                variables.push_back(text);
            }
        }
        variables.push_back("HOME=" + home_);
        variables.insert(variables.end(), added_.begin(), added_.end());
        return {.environment = StartEnvironment(variables),
                .applicationFolders = {folder_.path("applications")},
                .userTime = {},
                .patience = patience_,
                .busPatience = busPatience_,
                .startingTime = startingTime_};
    }

    Workspace& workspace() {
        if (!workspace_) {
            workspace_ = makeGioWorkspace(settings());
        }
        return *workspace_;
    }

    // An entry with these lines after the obligatory ones.
    std::string entry(const std::string& lines, const std::string& name = "app.desktop") const {
        return folder_.write("applications/" + name,
                             "[Desktop Entry]\nType=Application\nName=App\n" + lines);
    }

    // An entry that runs this shell script.
    std::string scriptEntry(const std::string& body, const std::string& lines = {}) const {
        return entry("Exec=" + folder_.script("program", body) + "\n" + lines);
    }

    Answer open(const std::string& path) {
        Openings opening;
        workspace().openApplication(path, {}, opening.completion());
        return opening.wait();
    }

    // What the workspace's thread had to do is done.
    void drain() { open(folder_.path("nothing")); }

    // What the entry's program wrote into the report, "(nothing)" if it never did.
    std::string reported() { return report_.line().value_or("(nothing)"); }

    Folder folder_;
    Report report_;
    std::string home_;
    std::vector<std::string> added_;  // to the environment
    std::chrono::milliseconds patience_ = kPatience;
    std::chrono::milliseconds busPatience_ = kPatience;
    std::chrono::milliseconds startingTime_ = kPatience;
    std::unique_ptr<Workspace> workspace_;
};

// Ends a process that a test left running on purpose.
inline void endProcess(pid_t process) {
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
}

}  // namespace tavo::processes
