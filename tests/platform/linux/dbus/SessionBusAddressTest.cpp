#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/linux/dbus/SessionBusAddress.h"
#include "tests/platform/linux/fixtures/PrivateBus.h"
#include "tests/platform/linux/fixtures/SilentSocket.h"

namespace tavo {
namespace {

struct Address {
    std::string name;
    std::string address;
    std::string file;
};

class SocketFile : public testing::TestWithParam<Address> {};

TEST_P(SocketFile, of_an_address_is_the_first_path_in_it) {
    SCOPED_TRACE(GetParam().name);
    EXPECT_EQ(socketFileOf(GetParam().address), GetParam().file);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, SocketFile,
    testing::Values(Address{"none", "", ""}, Address{"a path", "unix:path=/run/bus", "/run/bus"},
                    Address{"a path and an id", "unix:path=/run/bus,guid=0af", "/run/bus"},
                    Address{"an id before", "unix:guid=0af,path=/run/bus", "/run/bus"},
                    Address{"escaped", "unix:path=/run/b%20s", "/run/b s"},
                    Address{"badly escaped", "unix:path=/run/%zz", ""},
                    Address{"abstract", "unix:abstract=/tmp/bus", ""},
                    Address{"another transport", "tcp:host=localhost,port=1", ""},
                    Address{"two addresses", "unix:path=/a;unix:path=/b", "/a"}));

TEST(BusAnswers, is_true_for_a_running_bus_and_where_there_is_no_socket_file) {
    const processes::Folder folder;
    const processes::PrivateBus bus(folder);
    EXPECT_TRUE(busAnswers("unix:path=" + folder.path("bus")));
    EXPECT_TRUE(busAnswers("unix:abstract=nowhere"));
    EXPECT_TRUE(busAnswers("unix:path=" + folder.path("gone")));
}

TEST(BusAnswers, is_false_for_a_socket_that_stays_silent) {
    const processes::Folder folder;
    const processes::SilentSocket silent(folder.path("bus"));
    EXPECT_FALSE(busAnswers("unix:path=" + folder.path("bus")));
}

TEST(AccessibilityBusAnswers, is_false_only_while_a_bus_of_the_runtime_folder_stays_silent) {
    const processes::Folder folder;
    ::unsetenv("AT_SPI_BUS_ADDRESS");
    ::setenv("XDG_RUNTIME_DIR", folder.path("").c_str(), 1);
    ::setenv("DISPLAY", ":0", 1);
    EXPECT_TRUE(accessibilityBusAnswers());
    std::filesystem::create_directory(folder.path("at-spi"));
    EXPECT_TRUE(accessibilityBusAnswers());
    {
        const processes::SilentSocket silent(folder.path("at-spi/bus_0"));
        EXPECT_FALSE(accessibilityBusAnswers());
        ::setenv("AT_SPI_BUS_ADDRESS", ("unix:path=" + folder.path("gone")).c_str(), 1);
        EXPECT_TRUE(accessibilityBusAnswers());
        ::unsetenv("AT_SPI_BUS_ADDRESS");
    }
    EXPECT_TRUE(accessibilityBusAnswers());
    ::unsetenv("XDG_RUNTIME_DIR");
    EXPECT_TRUE(accessibilityBusAnswers());
}

TEST(AccessibilityBusAnswers, asks_only_the_bus_of_this_display_and_that_of_none) {
    const processes::Folder folder;
    ::unsetenv("AT_SPI_BUS_ADDRESS");
    ::setenv("XDG_RUNTIME_DIR", folder.path("").c_str(), 1);
    std::filesystem::create_directory(folder.path("at-spi"));
    const processes::SilentSocket silent(folder.path("at-spi/bus_0"));
    for (const char* const silents : {":0", ":0.0"}) {
        ::setenv("DISPLAY", silents, 1);
        EXPECT_FALSE(accessibilityBusAnswers()) << silents;
    }
    for (const char* const another : {":1", ":00", "host:0"}) {
        ::setenv("DISPLAY", another, 1);
        EXPECT_TRUE(accessibilityBusAnswers()) << another;
    }
    ::unsetenv("DISPLAY");
    EXPECT_TRUE(accessibilityBusAnswers());
    const processes::SilentSocket ofNone(folder.path("at-spi/bus"));
    EXPECT_FALSE(accessibilityBusAnswers());
    ::unsetenv("XDG_RUNTIME_DIR");
}

TEST(AccessibilityBusAnswers, is_true_when_one_of_the_two_answers) {
    const processes::Folder folder;
    ::unsetenv("AT_SPI_BUS_ADDRESS");
    ::setenv("XDG_RUNTIME_DIR", folder.path("").c_str(), 1);
    ::setenv("DISPLAY", ":0", 1);
    std::filesystem::create_directory(folder.path("at-spi"));
    const processes::SilentSocket silent(folder.path("at-spi/bus_0"));
    const processes::PrivateBus bus(folder);
    std::filesystem::rename(folder.path("bus"), folder.path("at-spi/bus"));
    EXPECT_TRUE(accessibilityBusAnswers());
    ::unsetenv("DISPLAY");
    ::unsetenv("XDG_RUNTIME_DIR");
}

}  // namespace
}  // namespace tavo
