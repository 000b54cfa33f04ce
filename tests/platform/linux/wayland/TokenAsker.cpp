// Shows a window. Once that has the focus, asks three times for an activation token, and prints
// each answer: "token TEXT", or "none".
#include <QGuiApplication>
#include <QRasterWindow>
#include <cstdio>

#include "platform/linux/wayland/WaylandActivationTokens.h"

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("org.example.Asker"));
    const auto tokens = tavo::makeWaylandActivationTokens();
    QRasterWindow window;
    window.resize(100, 80);
    bool asked = false;
    QObject::connect(&application, &QGuiApplication::focusWindowChanged, &window,
                     [&](const QWindow* focused) {
                         if (focused == nullptr || asked) {
                             return;
                         }
                         asked = true;
                         for (int round = 0; round < 3; ++round) {
                             const auto token = tokens->token("org.example.Started");
                             std::printf("%s\n", token ? ("token " + *token).c_str() : "none");
                         }
                         std::fflush(stdout);
                     });
    window.show();
    return QGuiApplication::exec();
}
