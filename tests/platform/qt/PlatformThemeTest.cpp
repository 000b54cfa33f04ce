#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeySequence>
#include <QStyleHints>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/qt/PlatformTheme.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

// Whether Qt has loaded the theme that is offered to it in a file.
bool foreignThemeIsLoaded() {
    std::ifstream file("/proc/self/maps");
    const std::string maps((std::istreambuf_iterator<char>(file)), {});
    return maps.find("libforeigntheme") != std::string::npos;
}

TEST(PlatformTheme, is_the_only_one_that_is_loaded_whatever_the_session_names) {
    ScopedVariables variables;
    variables.set("QT_QPA_PLATFORM", "offscreen");
    variables.set("QT_QPA_PLATFORMTHEME", "gtk3");
    variables.set("QT_PLUGIN_PATH", TAVO_TEST_PROGRAMS "/plugins");
    char program[] = "program";
    {
        PlatformThemeArguments arguments(program);
        const QGuiApplication application(arguments.count(), arguments.values());
        EXPECT_FALSE(foreignThemeIsLoaded());
        EXPECT_EQ(arguments.count(), 1) << "Qt has not read the arguments";
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORMTHEME"), "gtk3") << "programs inherit it";
        EXPECT_TRUE(QKeySequence::keyBindings(QKeySequence::DeleteCompleteLine)
                        .contains(QKeySequence(Qt::CTRL | Qt::Key_U)));
        const int usual = QGuiApplication::styleHints()->mouseDoubleClickDistance();
        setDoubleClickDistance(usual + 7);
        EXPECT_EQ(QGuiApplication::styleHints()->mouseDoubleClickDistance(), usual + 7);
        setDoubleClickDistance(std::nullopt);
        EXPECT_EQ(QGuiApplication::styleHints()->mouseDoubleClickDistance(), usual);
    }
    // Shows that it would have been noticed.
    int count = 1;
    char* values[] = {program, nullptr};
    const QGuiApplication application(count, values);
    EXPECT_TRUE(foreignThemeIsLoaded());
}

}  // namespace
}  // namespace tavo
