// The executable: answers the arguments, and hands over to the process that already runs. Links to
// the C++ library alone, so that a second start is quick; a first start loads the rest.
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <dlfcn.h>

#include "app/linux/LibraryEntry.h"
#include "platform/linux/instance/InstanceSocket.h"
#include "platform/linux/system/StartEnvironment.h"

namespace {

constexpr int kFailure = 1;
constexpr int kUsageError = 2;

// `argument` for a line on a terminal: printable ASCII as it is, all other bytes in hexadecimal,
// and a hundred bytes at most.
std::string quoted(std::string_view argument) {
    constexpr std::size_t kMost = 100;
    std::string shown = "\"";
    for (const char character : argument.substr(0, kMost)) {
        if (character >= ' ' && character <= '~' && character != '"' && character != '\\') {
            shown += character;
        } else {
            char escaped[sizeof "\\x00"];
            std::snprintf(escaped, sizeof escaped, "\\x%02x",
                          static_cast<unsigned char>(character));
            shown += escaped;
        }
    }
    return shown + (argument.size() > kMost ? "\"..." : "\"");
}

// Prints what the arguments ask for. Returns the exit status, or nothing where the program goes on.
std::optional<int> answerArguments(int argc, char** argv) {
    if (argc <= 1) {
        return std::nullopt;
    }
    const std::string_view argument = argv[1];
    if (argc == 2 && argument == "--help") {
        std::puts(
            "Usage: tavolauncher [--help | --version]\n"
            "Shows the applications installed for you and opens the one you pick.");
        return 0;
    }
    if (argc == 2 && argument == "--version") {
        std::puts("tavolauncher " TAVO_VERSION);
        return 0;
    }
    const bool known = argument == "--help" || argument == "--version";
    std::fprintf(stderr,
                 "tavolauncher: the argument %s is refused; it takes --help or --version alone\n",
                 quoted(known ? argv[2] : argument).c_str());
    return kUsageError;
}

// The library that holds the program: beside the executable in a build tree, else in the folder of
// libraries relative to the executable, so that an installation can be moved. Otherwise its name
// alone, which dlopen() looks for in the run path: a copy of the executable knows its build tree.
std::string programLibrary() {
    std::error_code unreadable;
    const std::filesystem::path folder =
        std::filesystem::read_symlink("/proc/self/exe", unreadable).parent_path();
    for (const char* const place : {".", TAVO_INSTALLED_LIBRARIES}) {
        const std::filesystem::path library = folder / place / TAVO_LIBRARY;
        if (std::filesystem::exists(library, unreadable)) {
            return library.lexically_normal();
        }
    }
    return TAVO_LIBRARY;
}

// Loads the library and all that it links to. Null, with a line on standard error, when something
// is missing.
decltype(&runTavoLauncher) loadProgram() {
    void* const library = ::dlopen(programLibrary().c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* const run = library != nullptr ? ::dlsym(library, "runTavoLauncher") : nullptr;
    if (run == nullptr) {
        std::fprintf(stderr, "tavolauncher: the program cannot be loaded: %s\n", ::dlerror());
    }
    return reinterpret_cast<decltype(&runTavoLauncher)>(run);
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tavo;
    const StartEnvironment environment = StartEnvironment::capture();
    if (const auto status = answerArguments(argc, argv)) {
        return *status;
    }
    LaunchArguments launch = {
        .program = argv[0],
        .environment = environment,
        .request = {.startupId = environment.value("DESKTOP_STARTUP_ID").value_or(""),
                    .activationToken = environment.value("XDG_ACTIVATION_TOKEN").value_or("")},
        .socket = nullptr};
    InstanceClaimed claimed = claimInstance(InstancePlaces::in(environment), launch.request);
    switch (claimed.claim) {
        case InstanceClaim::HandedOver:
            return 0;
        case InstanceClaim::NoAnswer:
            std::fprintf(stderr,
                         "tavolauncher: another process of it is starting or ending, and takes "
                         "too long about it\n");
            return kFailure;
        case InstanceClaim::First:
        case InstanceClaim::Impossible:
            break;
    }
    launch.socket = std::move(claimed.socket);
    const auto run = loadProgram();
    return run != nullptr ? run(launch) : kFailure;
}
