#include "platform/linux/opening/LinuxWorkspace.h"

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/bundles/BundleFolder.h"
#include "platform/linux/dbus/GLibThread.h"
#include "platform/linux/entries/DesktopFileId.h"
#include "platform/linux/entries/ExecutableLookup.h"
#include "platform/linux/entries/XdgEnvironment.h"
#include "platform/linux/opening/BundleOpening.h"
#include "platform/linux/opening/DesktopEntryCheck.h"
#include "platform/linux/opening/EntryOpening.h"
#include "platform/linux/opening/FirstWindow.h"
#include "platform/linux/opening/LaunchErrors.h"
#include "platform/linux/opening/PendingLaunches.h"
#include "platform/linux/opening/ProgramCheck.h"
#include "platform/linux/system/HostName.h"

namespace tavo {
namespace {

// What a program is looked for in where no PATH is set.
constexpr const char* kDefaultSearchPath = "/usr/local/bin:/usr/bin:/bin";

enum class Target { missing, entry, bundle, other };

Target targetAt(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return Target::missing;
    }
    if (S_ISDIR(status.st_mode)) {
        return Target::bundle;
    }
    return isDesktopFileName(path) ? Target::entry : Target::other;
}

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

// The desktop-file id of an entry; of several folders that hold it, the innermost counts.
std::string entryIdentifier(const std::string& path, const std::vector<std::string>& folders) {
    std::size_t begin = path.rfind('/') + 1;
    std::size_t longest = 0;
    for (const std::string& given : folders) {
        const std::string prefix = withoutTrailingSlashes(given) + '/';
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
          searchPath_(settings_.environment.value("PATH").value_or(kDefaultSearchPath)),
          x11Display_(settings_.wayland ? "" : settings_.environment.value("DISPLAY").value_or("")),
          conditions_(conditions()),
          starts_(settings_.startingTime),
          firstWindow_(settings_.mainQueue, settings_.showsWindow) {}

    std::optional<BundleFacts> bundle(const std::string& path) override {
        switch (targetAt(path)) {
            case Target::bundle:
                return readBundleFolder(path);
            case Target::entry:
                return entryFacts(path);
            default:
                return std::nullopt;
        }
    }

    void openApplication(const std::string& path, OpenConfiguration configuration,
                         OpenCompletion completion) override {
        if (!thread_) {
            thread_.emplace(settings_.bus.forLibraries ? "" : settings_.bus.address);
        }
        // What is not to come forward has no window by which the end of its start could be told.
        const auto start = configuration.activates ? starts_.begin(path) : starts_.beginUnnoticed();
        if (!start) {
            thread_->post([completion = std::move(completion)] { completion({}, {}); });
            return;
        }
        const auto answer = std::make_shared<OpenAnswer>(std::move(completion), start);
        const std::shared_ptr<const ApplicationStart> described =
            describeStart(path, configuration.activates, answer);
        thread_->post([&thread = *thread_, described] { open(thread, described); });
    }

private:
    [[nodiscard]] std::optional<BundleFacts> entryFacts(const std::string& path) const {
        const Result<EntryKeys> keys = readEntryKeys(path);
        if (!keys) {
            return std::nullopt;
        }
        BundleFacts facts;
        facts.identifier = entryIdentifier(path, settings_.applicationFolders);
        const auto program = findProgram(programOf(keys.value().command).value_or(""), searchPath_,
                                         keys.value().workingDirectory);
        if (program) {
            facts.executablePath = program.value();
        }
        return facts;
    }

    [[nodiscard]] std::shared_ptr<const StartConditions> conditions() const {
        StartConditions common;
        common.searchPath = searchPath_;
        common.languages = messageLanguages();
        common.display = x11Display_;
        common.wayland = settings_.wayland;
        common.patience = settings_.patience;
        common.busPatience = settings_.busPatience;
        common.startingTime = settings_.startingTime;
        common.seesWindows = settings_.seesWindows;
        return std::make_shared<const StartConditions>(std::move(common));
    }

    std::shared_ptr<const ApplicationStart> describeStart(
        const std::string& path, bool activates, const std::shared_ptr<OpenAnswer>& answer) {
        auto start = std::make_shared<ApplicationStart>();
        start->conditions = conditions_;
        start->path = path;
        start->identifier = entryIdentifier(path, settings_.applicationFolders);
        start->home = home();
        start->environment = settings_.environment.forChildren();
        start->answer = answer;
        start->began = [](const RunningApplication&) {};
        if (activates) {
            start->startupId = newStartupId();
            start->activationToken =
                settings_.activationToken ? settings_.activationToken(start->identifier) : "";
            start->began = [this, answer](const RunningApplication& running) {
                awaitWindow(running, answer);
            };
        }
        if (!start->startupId.empty()) {
            start->environment.push_back("DESKTOP_STARTUP_ID=" + start->startupId);
        }
        if (!start->activationToken.empty()) {
            start->environment.push_back("XDG_ACTIVATION_TOKEN=" + start->activationToken);
        }
        start->context = makeLaunchContext(start->environment);
        return start;
    }

    // An answer is given on the workspace's thread, whoever has it.
    void awaitWindow(const RunningApplication& running, const std::shared_ptr<OpenAnswer>& answer) {
        firstWindow_.await(running, answer->start(), [this, answer, running] {
            thread_->post([answer, running] {
                answer->over();
                answer->succeed(running);
            });
        });
    }

    static void open(GLibThread& thread, const std::shared_ptr<const ApplicationStart>& start) {
        switch (targetAt(start->path)) {
            case Target::missing:
                start->answer->fail(messages::applicationMissing(start->path));
                break;
            case Target::other:
                start->answer->fail(messages::notAnApplication(start->path));
                break;
            case Target::bundle:
                openBundle(thread, *start);
                break;
            case Target::entry:
                openEntry(thread, start);
                break;
        }
    }

    [[nodiscard]] std::string home() const {
        const std::string home = settings_.environment.value("HOME").value_or("");
        return !home.empty() && home.front() == '/' && targetAt(home) == Target::bundle ? home
                                                                                        : "/";
    }

    // In the form that Startup Notification wants, unique for this user's session. Only an X11
    // desktop understands it.
    std::string newStartupId() {
        if (x11Display_.empty()) {
            return {};
        }
        std::string id = "tavo-" + std::to_string(::getpid()) + '-' + hostName() + '-' +
                         std::to_string(++startupIds_);
        const auto time = settings_.userTime ? settings_.userTime() : std::nullopt;
        return time ? id + "_TIME" + std::to_string(*time) : id;
    }

    const OpeningSettings settings_;
    const std::string searchPath_;
    const std::string x11Display_;  // empty where the session is none of X11
    const std::shared_ptr<const StartConditions> conditions_;
    std::uint64_t startupIds_ = 0;
    PendingLaunches starts_;
    const FirstWindow firstWindow_;
    std::optional<GLibThread> thread_;  // begins with the first opening
};

}  // namespace

std::unique_ptr<Workspace> makeLinuxWorkspace(OpeningSettings settings) {
    return std::make_unique<LinuxWorkspace>(std::move(settings));
}

}  // namespace tavo
