// Views need an application object; without a screen, and always drawn the same way.
#include <QApplication>
#include <cstdlib>

#include <gtest/gtest.h>

#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/LauncherStyle.h"
#include "ui/look/Motion.h"

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    testing::InitGoogleTest(&argc, argv);
    QApplication::setStyle(new tavo::LauncherStyle);
    QApplication application(argc, argv);
    tavo::installAccessibleItems();
    // What a test looks at is there at once.
    tavo::setReducedMotion(true);
    return RUN_ALL_TESTS();
}
