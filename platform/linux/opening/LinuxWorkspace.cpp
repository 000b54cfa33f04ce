#include "platform/linux/opening/LinuxWorkspace.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include <unistd.h>

#include "platform/MainThreadPoster.h"
#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/entries/ExecutableLookup.h"
#include "platform/linux/opening/ApplicationFile.h"
#include "platform/linux/opening/ApplicationStart.h"
#include "platform/linux/opening/FirstWindow.h"
#include "platform/linux/opening/OpeningThread.h"
#include "platform/linux/opening/PendingLaunches.h"
#include "platform/linux/system/FileStamp.h"
#include "platform/linux/system/HostName.h"

namespace tavo {
namespace {

// The desktop-file id of the entry at `path`: its path below the innermost of `folders` that holds
// it, with '-' for '/'; else the name of its file.
std::string entryIdentifier(const std::string& path, const std::vector<std::string>& folders) {
    std::size_t begin = path.rfind('/') + 1;
    std::size_t longest = 0;
    for (const std::string& folder : folders) {
        const std::string prefix = folder + '/';
        if (prefix.size() > longest && path.starts_with(prefix)) {
            longest = prefix.size();
            begin = longest;
        }
    }
    std::string identifier = path.substr(begin);
    std::replace(identifier.begin(), identifier.end(), '/', '-');
    return identifier;
}

class LinuxWorkspace final : public Workspace {
public:
    explicit LinuxWorkspace(OpeningSettings settings)
        : settings_(std::move(settings)),
          languages_(messageLanguages()),
          conditions_(conditions()),
          launches_(settings_.startingTime),
          firstWindow_(settings_.mainQueue, settings_.running),
          mainThread_(settings_.mainQueue),
          thread_(settings_.bus) {}

    std::optional<BundleFacts> bundle(const std::string& path) override {
        const FileStamp stamp = fileStamp(path);
        const Result<ApplicationFile> file = readApplicationFile(path, languages_);
        latest_ = file ? std::optional(Latest{file.value(), stamp}) : std::nullopt;
        if (!file) {
            return std::nullopt;
        }
        return file.value().bundle ? file.value().bundle : entryFacts(file.value());
    }

    void openApplication(const std::string& path, OpenConfiguration configuration,
                         OpenCompletion completion) override {
        OpenCompletion onMainThread = this->onMainThread(std::move(completion));
        const Result<ApplicationFile> file = fileOfClick(path);
        // An application that is not to come forward is not watched for a window, so its start
        // could not end with the first window. An address is passed on even to an application that
        // is still starting.
        const auto launch = configuration.activates && configuration.address.empty()
                                ? launches_.begin(path, !comesForwardByStarting(file))
                                : launches_.beginUnnoticed();
        if (!launch) {
            thread_.post([completion = std::move(onMainThread)] { completion({}, {}); });
            return;
        }
        const auto answer = std::make_shared<OpenAnswer>(std::move(onMainThread), launch);
        if (!file) {
            thread_.post([answer, error = file.error()] { answer->fail(error); });
            return;
        }
        startApplication(thread_, describeStart(file.value(), configuration, answer));
    }

private:
    // What bundle() has read for a click, kept for the openApplication() that follows.
    struct Latest {
        ApplicationFile file;
        FileStamp stamp;
    };

    // Where windows are not listed, a click brings the one window of such an application forward by
    // starting the application again.
    [[nodiscard]] bool comesForwardByStarting(const Result<ApplicationFile>& file) const {
        return file && !seesWindows() &&
               (file.value().entry.singleMainWindow || file.value().entry.dbusActivatable);
    }

    [[nodiscard]] bool seesWindows() const {
        return settings_.running != nullptr && settings_.running->listsWindows();
    }

    Result<ApplicationFile> fileOfClick(const std::string& path) {
        const std::optional<Latest> latest = std::exchange(latest_, std::nullopt);
        if (latest && latest->file.path == path && latest->stamp == fileStamp(path)) {
            return latest->file;
        }
        return readApplicationFile(path, languages_);
    }

    // A completion that calls `completion` on the main thread. It may use `this`: only jobs on
    // thread_ call it, and thread_ ends before all other members.
    OpenCompletion onMainThread(OpenCompletion completion) {
        return [this, completion = std::move(completion)](
                   const std::optional<RunningApplication>& running,
                   const std::optional<Error>& error) {
            mainThread_.post([completion, running, error] { completion(running, error); });
        };
    }

    [[nodiscard]] BundleFacts entryFacts(const ApplicationFile& file) const {
        BundleFacts facts;
        facts.identifier = entryIdentifier(file.path, settings_.applicationFolders);
        const ExecutableMatch program =
            ExecutableLookup(conditions_->searchPath)
                .find(programOf(file.entry.exec).value_or(""), file.entry.path);
        if (program.state == ExecutableMatch::State::executable) {
            facts.executablePath = program.path;
        }
        return facts;
    }

    // The value of `variable` in the environment of started applications; empty when unset.
    [[nodiscard]] std::string value(const char* variable) const {
        return settings_.environment.value(variable).value_or("");
    }

    [[nodiscard]] std::shared_ptr<const StartConditions> conditions() const {
        return std::make_shared<const StartConditions>(
            StartConditions{.searchPath = value("PATH"),
                            .display = settings_.wayland ? "" : value("DISPLAY"),
                            .wayland = settings_.wayland,
                            .patience = settings_.patience,
                            .busPatience = settings_.busPatience,
                            .startingTime = settings_.startingTime});
    }

    std::shared_ptr<const ApplicationStart> describeStart(
        const ApplicationFile& file, const OpenConfiguration& configuration,
        const std::shared_ptr<OpenAnswer>& answer) {
        auto start = std::make_shared<ApplicationStart>();
        start->conditions = conditions_;
        start->file = file;
        start->address = configuration.address;
        start->identifier = entryIdentifier(file.path, settings_.applicationFolders);
        start->home = home();
        start->environment = settings_.environment.forChildren();
        start->seesWindows = seesWindows();
        start->answer = answer;
        start->began = [](const RunningApplication&) {};
        if (configuration.activates) {
            start->startupId = newStartupId();
            start->activationToken =
                settings_.activationToken ? settings_.activationToken(start->identifier) : "";
            start->began = [this, answer](const RunningApplication& running) {
                awaitWindow(running, answer);
            };
        }
        if (!file.bundle) {
            start->environment.push_back("GIO_LAUNCHED_DESKTOP_FILE=" + file.path);
        }
        // GTK 3.24.38 takes an activation token from DESKTOP_STARTUP_ID alone.
        const std::string& id =
            start->startupId.empty() ? start->activationToken : start->startupId;
        if (!id.empty()) {
            start->environment.push_back("DESKTOP_STARTUP_ID=" + id);
        }
        if (!start->activationToken.empty()) {
            start->environment.push_back("XDG_ACTIVATION_TOKEN=" + start->activationToken);
        }
        return start;
    }

    // The window is seen on the main thread, but `answer` may be used on the bus thread only.
    void awaitWindow(const RunningApplication& running, const std::shared_ptr<OpenAnswer>& answer) {
        firstWindow_.await(running, answer->start(), [this, answer, running] {
            thread_.post([answer, running] {
                answer->over();
                answer->succeed(running);
            });
        });
    }

    [[nodiscard]] std::string home() const {
        const std::string home = value("HOME");
        std::error_code unreachable;
        return home.starts_with('/') && std::filesystem::is_directory(home, unreachable) ? home
                                                                                         : "/";
    }

    // A startup id in the form of the Startup Notification specification, unique in this user's
    // session. Empty outside X11, where no desktop understands it.
    std::string newStartupId() {
        if (conditions_->display.empty()) {
            return {};
        }
        std::string id = "tavo-" + std::to_string(::getpid()) + '-' + hostName() + '-' +
                         std::to_string(++startupIds_);
        const auto time = settings_.userTime ? settings_.userTime() : std::nullopt;
        return time ? id + "_TIME" + std::to_string(*time) : id;
    }

    const OpeningSettings settings_;
    const std::vector<std::string> languages_;
    const std::shared_ptr<const StartConditions> conditions_;
    std::uint64_t startupIds_ = 0;
    std::optional<Latest> latest_;
    PendingLaunches launches_;
    const FirstWindow firstWindow_;
    MainThreadPoster mainThread_;
    OpeningThread thread_;  // the last member: jobs on it use the others
};

}  // namespace

std::unique_ptr<Workspace> makeLinuxWorkspace(OpeningSettings settings) {
    return std::make_unique<LinuxWorkspace>(std::move(settings));
}

}  // namespace tavo
