// A session bus for one test.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include <unistd.h>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/PosixSpawn.h"
#include "tests/platform/linux/OpeningFixture.h"

namespace tavo::processes {

// A bus daemon with services of its own and nothing else, the session bus of this process while it
// lives. Ends with the test, its services too.
class PrivateBus {
public:
    explicit PrivateBus(const Folder& folder) : folder_(folder) {
        std::filesystem::create_directories(folder.path("services"));
        const std::string configuration = folder.write(
            "bus.conf", "<busconfig><type>session</type><listen>unix:path=" + folder.path("bus") +
                            "</listen><servicedir>" + folder.path("services") +
                            "</servicedir><policy context='default'><allow send_destination='*'/>"
                            "<allow receive_sender='*'/>"
                            "<allow own='*'/></policy></busconfig>");
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        const FileDescriptor reading(ends[0]);
        FileDescriptor writing(ends[1]);
        ProgramStart daemon;
        // Goes even if the test is killed.
        daemon.executable = "/usr/bin/setpriv";
        daemon.arguments = {"--pdeathsig",
                            "KILL",
                            "/usr/bin/dbus-daemon",
                            "--nofork",
                            "--nopidfile",
                            "--print-address=1",
                            "--config-file=" + configuration};
        daemon.environment = {"PATH=/usr/bin:/bin", "HOME=" + folder.path()};
        daemon.output = writing.get();
        EXPECT_EQ(startProgram(daemon, process_), 0);
        writing.close();
        char address[512];
        EXPECT_GT(::read(reading.get(), address, sizeof address), 0);  // it listens
        variable_.emplace("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder.path("bus"));
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus() { end(); }

    // As if the session were over.
    void end() {
        if (process_ > 0) {
            endProcess(std::exchange(process_, 0));
        }
    }

    [[nodiscard]] pid_t process() const { return process_; }

    void addService(const std::string& name, const std::string& command) const {
        folder_.write("services/" + name + ".service",
                      "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
    }

private:
    const Folder& folder_;
    pid_t process_ = 0;
    std::optional<Variable> variable_;
};

}  // namespace tavo::processes
