// Adapters need an application object and must never reach the user's own session bus.
#include <QCoreApplication>
#include <cstdlib>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // An unset address would make the bus library start a stray daemon; this one leads nowhere.
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
