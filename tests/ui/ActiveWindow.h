// The keyboard for a window of a test.
#pragma once

#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace tavo {

// Makes the window of `widget`, which has to be shown, the active one. Returns once it is.
inline void activate(QWidget& widget) {
    widget.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&widget));
}

}  // namespace tavo
