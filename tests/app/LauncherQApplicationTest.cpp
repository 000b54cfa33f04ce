#include <QCloseEvent>
#include <QTimer>
#include <QWidget>
#include <cstdlib>

#include <gtest/gtest.h>

#include "app/LauncherQApplication.h"

namespace tavo {
namespace {

// Refuses to be closed, as the launcher window does.
class UnwillingWindow final : public QWidget {
protected:
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
};

TEST(LauncherQApplication, is_ended_by_the_desktop_whatever_its_window_says_to_being_closed) {
    UnwillingWindow window;
    window.show();
    bool late = false;
    QTimer::singleShot(20000, qApp, [&late] {
        late = true;
        QCoreApplication::exit(3);
    });
    QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_FALSE(late);
    EXPECT_TRUE(window.isVisible());
}

TEST(LauncherQApplication, goes_on_when_its_last_window_is_closed) {
    QWidget window;
    window.show();
    QTimer::singleShot(0, &window, [&window] { window.close(); });
    // Late enough: if Qt quit for the last window, it would do so in the next turn of the event
    // loop.
    QTimer::singleShot(100, qApp, [] { QCoreApplication::exit(3); });
    EXPECT_EQ(QCoreApplication::exec(), 3);
}

}  // namespace
}  // namespace tavo

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    testing::InitGoogleTest(&argc, argv);
    const tavo::LauncherQApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
