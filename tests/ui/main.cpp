// Runs tests of the window and its parts, which need a QApplication: without a screen, and with the
// same style and font on every machine.
#include <QApplication>
#include <QFontDatabase>
#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/golden/PinnedFont.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/LauncherStyle.h"
#include "ui/look/Motion.h"

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    testing::InitGoogleTest(&argc, argv);
    QApplication::setStyle(new tavo::LauncherStyle);
    QApplication application(argc, argv);
    for (const QString& file : tavo::interFiles()) {
        if (QFontDatabase::addApplicationFont(file) < 0) {
            std::fprintf(stderr, "not installed: %s\n", qPrintable(file));
            return 1;
        }
    }
    // Inter first; the machine's other fonts draw the characters that it lacks.
    QApplication::setFont(QFont(QStringLiteral("Inter"), 10));
    tavo::installAccessibleItems();
    // Ends every animation at once, so that no test waits for one.
    tavo::setReducedMotion(true);
    return RUN_ALL_TESTS();
}
