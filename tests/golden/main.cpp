// Compares texts and pictures of the window with the approved ones. Draws them alike on all
// machines: settings of the machine, the user and the session are ignored.
//
// tavo_golden_tests [--scale=N] [--record=FOLDER] [argument for gtest...]
#include <QApplication>
#include <QFile>
#include <QFont>
#include <QHashSeed>
#include <QLocale>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/golden/Approval.h"
#include "tests/golden/PinnedFont.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/LauncherStyle.h"
#include "ui/look/Metrics.h"
#include "ui/look/Motion.h"
#include "ui/look/QtTexts.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace {

constexpr char kScreen[] =
    R"({"screens": [{"name": "pinned", "x": 0, "y": 0, "width": 4000, "height": 3000,
        "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";

// Unsets all variables that change how Qt and its libraries behave.
void forgetEnvironment() {
    std::vector<std::string> names;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string name = std::string(*variable).substr(0, std::string(*variable).find('='));
        for (const char* const prefix :
             {"QT_", "XDG_", "LC_", "LANG", "GTK_", "KDE_", "DESKTOP_"}) {
            if (name.starts_with(prefix)) {
                names.push_back(name);
            }
        }
    }
    for (const std::string& name : names) {
        ::unsetenv(name.c_str());
    }
}

void pinEnvironment(const QString& folder, const std::string& scale) {
    forgetEnvironment();
    QFile screen(folder + QStringLiteral("/screen.json"));
    if (!screen.open(QIODevice::WriteOnly) || screen.write(kScreen) < 0) {
        throw std::runtime_error("the screen cannot be pinned");
    }
    screen.close();
    const std::string home = folder.toStdString();
    for (const auto& [name, value] : std::vector<std::pair<const char*, std::string>>{
             {"HOME", home},
             {"XDG_RUNTIME_DIR", home},
             {"LC_ALL", "C.UTF-8"},
             {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"},
             {"QT_QPA_PLATFORM", "offscreen:configfile=" + home + "/screen.json"},
             {"QT_SCALE_FACTOR", scale},
             {"QT_FONT_DPI", "96"},
         }) {
        ::setenv(name, value.c_str(), 1);
    }
    tavo::pinFont(folder);
}

void pinApplication() {
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    QFont font(QStringLiteral("Inter"));
    font.setPixelSize(tavo::metrics::kBody);
    QApplication::setFont(font);
    QApplication::setCursorFlashTime(0);
    tavo::setReducedMotion(true);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::string scale = "1";
    std::string record;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.starts_with("--scale=")) {
            scale = argument.substr(8);
        } else if (argument.starts_with("--record=")) {
            record = argument.substr(9);
        } else {
            std::fprintf(stderr, "unknown argument %s\n", argv[i]);
            return 2;
        }
    }
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        std::fprintf(stderr, "no temporary folder: %s\n", qPrintable(folder.errorString()));
        return 1;
    }
    QHashSeed::setDeterministicGlobalSeed();
    pinEnvironment(folder.path(), scale);
    QApplication::setStyle(new tavo::LauncherStyle);
    int none = 1;
    QApplication application(none, argv);
    pinApplication();
    QCoreApplication::installTranslator(new tavo::QtTexts(&application));
    tavo::installAccessibleItems();
    tavo::approvalFolders().recorded = QString::fromStdString(record);
    return RUN_ALL_TESTS();
}
