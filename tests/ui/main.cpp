// Views need an application object; without a screen, and always drawn the same way.
#include <QApplication>
#include <QStyleFactory>
#include <cstdlib>

#include <gtest/gtest.h>

#include "ui/AccessibleItems.h"

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    tavo::installAccessibleItems();
    return RUN_ALL_TESTS();
}
