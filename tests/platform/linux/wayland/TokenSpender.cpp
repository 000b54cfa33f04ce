// Shows a window and says "shown" once it had the focus; then brings it forward by the activation
// token that comes as a line, and says what of it was in the environment: "in the environment:
// TEXT", or "not in the environment".
#include <QGuiApplication>
#include <QRasterWindow>
#include <QSocketNotifier>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include <unistd.h>

#include "platform/linux/session/SessionWindowManagement.h"
#include "platform/linux/windows/NullRunningApplications.h"

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    // No other road to the front than the token.
    const auto running = tavo::makeNullRunningApplications();
    const auto management = tavo::makeSessionWindowManagement(*running);
    QRasterWindow window;
    window.resize(100, 80);
    const auto say = [](const std::string& what) { std::cout << what << std::endl; };
    QObject::connect(&application, &QGuiApplication::focusWindowChanged, &window,
                     [&](const QWindow* focused) {
                         if (focused != nullptr) {
                             say("shown " + std::to_string(::getpid()));
                         }
                     });
    const QSocketNotifier lines(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&lines, &QSocketNotifier::activated, &window, [&] {
        tavo::StartRequest request;
        if (!std::getline(std::cin, request.activationToken)) {
            QGuiApplication::exit(0);
            return;
        }
        management->prepareToShow(window.winId(), request);
        const char* const variable = std::getenv("XDG_ACTIVATION_TOKEN");
        say(variable == nullptr ? "not in the environment"
                                : std::string("in the environment: ") + variable);
        management->bringToFront(window.winId(), request);
    });
    window.show();
    return QGuiApplication::exec();
}
