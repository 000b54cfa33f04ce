#include "platform/linux/GioWorkspace.h"

#include <algorithm>
#include <array>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/BundleFolder.h"
#include "platform/linux/DesktopEntryCheck.h"
#include "platform/linux/EntryOpening.h"
#include "platform/linux/GioThread.h"
#include "platform/linux/OpeningMessages.h"
#include "platform/linux/PosixSpawn.h"
#include "platform/linux/ProgramCheck.h"

namespace tavo {
namespace {

constexpr std::string_view kEntrySuffix = ".desktop";

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
    return path.ends_with(kEntrySuffix) ? Target::entry : Target::other;
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

std::string hostName() {
    std::array<char, 256> name = {};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? std::string(name.data())
                                                            : std::string("localhost");
}

// What a bundle's start needs, apart from its path.
struct BundleStart {
    std::vector<std::string> environment;
    std::string searchPath;
    std::string home;
};

// The path of the program in the bundle at `path`, if it would run.
Result<std::string> bundleProgram(const std::string& path, const BundleFacts& facts,
                                  const std::string& searchPath) {
    if (!facts.executablePath) {
        return messages::bundleWithoutProgram(path);
    }
    Result<std::string> program = findProgram(*facts.executablePath, searchPath, "");
    if (program) {
        if (const auto failure = whyScriptCannotRun(program.value(), searchPath)) {
            return *failure;
        }
    }
    return program;
}

void openBundle(GioThread& thread, const std::string& path, const BundleStart& start,
                OpenAnswer& answer) {
    const BundleFacts facts = readBundleFolder(path).value_or(BundleFacts());
    const Result<std::string> executable = bundleProgram(path, facts, start.searchPath);
    if (!executable) {
        answer.fail(executable.error());
        return;
    }
    ProgramStart program;
    program.executable = executable.value();
    program.environment = start.environment;
    program.workingDirectory = start.home;
    pid_t process = 0;
    if (const int failure = startProgram(program, process); failure != 0) {
        answer.fail(messages::startRefused(executable.value(), failure));
        return;
    }
    thread.watchChild(process, [](std::optional<int>) {});
    answer.succeed(RunningApplication{process, facts.identifier.value_or("")});
}

class GioWorkspace final : public Workspace {
public:
    explicit GioWorkspace(OpeningSettings settings)
        : settings_(std::move(settings)),
          searchPath_(settings_.environment.value("PATH").value_or(kDefaultSearchPath)) {}

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

    void openApplication(const std::string& path, OpenConfiguration /*configuration*/,
                         OpenCompletion completion) override {
        EntryStart start = describeStart(path, std::move(completion));
        if (!thread_) {
            thread_.emplace();
        }
        // A job can be copied, a start cannot.
        const auto shared = std::make_shared<EntryStart>(std::move(start));
        thread_->post(
            [&thread = *thread_, shared, environment = settings_.environment.forChildren()] {
                open(thread, std::move(*shared), environment);
            });
    }

private:
    [[nodiscard]] std::optional<BundleFacts> entryFacts(const std::string& path) const {
        const Result<EntryKeys> keys = readEntryKeys(path);
        if (!keys) {
            return std::nullopt;
        }
        BundleFacts facts;
        facts.identifier = entryIdentifier(path, settings_.applicationFolders);
        const auto program = findProgram(commandProgram(keys.value().command), searchPath_,
                                         keys.value().workingDirectory);
        if (program) {
            facts.executablePath = program.value();
        }
        return facts;
    }

    EntryStart describeStart(const std::string& path, OpenCompletion completion) {
        EntryStart start;
        start.path = path;
        start.identifier = entryIdentifier(path, settings_.applicationFolders);
        start.searchPath = searchPath_;
        start.home = home();
        start.patience = settings_.patience;
        const std::string startupId = newStartupId();
        start.context = makeLaunchContext(settings_.environment, startupId);
        start.identified = !startupId.empty();
        start.answer = std::make_shared<OpenAnswer>(std::move(completion));
        return start;
    }

    static void open(GioThread& thread, EntryStart start,
                     const std::vector<std::string>& environment) {
        switch (targetAt(start.path)) {
            case Target::missing:
                start.answer->fail(messages::applicationMissing(start.path));
                break;
            case Target::other:
                start.answer->fail(messages::notAnApplication(start.path));
                break;
            case Target::bundle:
                openBundle(thread, start.path, {environment, start.searchPath, start.home},
                           *start.answer);
                break;
            case Target::entry:
                openEntry(thread, std::move(start));
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
        const StartEnvironment& environment = settings_.environment;
        if (environment.value("DISPLAY").value_or("").empty() ||
            !environment.value("WAYLAND_DISPLAY").value_or("").empty()) {
            return {};
        }
        std::string id = "tavo-" + std::to_string(::getpid()) + '-' + hostName() + '-' +
                         std::to_string(++starts_);
        const auto time = settings_.userTime ? settings_.userTime() : std::nullopt;
        return time ? id + "_TIME" + std::to_string(*time) : id;
    }

    const OpeningSettings settings_;
    const std::string searchPath_;
    std::uint64_t starts_ = 0;
    std::optional<GioThread> thread_;  // begins with the first opening
};

}  // namespace

std::unique_ptr<Workspace> makeGioWorkspace(OpeningSettings settings) {
    return std::make_unique<GioWorkspace>(std::move(settings));
}

}  // namespace tavo
