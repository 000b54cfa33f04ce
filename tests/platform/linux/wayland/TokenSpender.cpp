// Shows a window, and prints "shown" and its PID whenever the window gets the focus. For each line
// of input, which is an activation token, brings the window forward by the token. Before that,
// prints whether the program has put a token into its environment: "in the environment: TEXT", or
// "not in the environment".
#include <QGuiApplication>
#include <QRasterWindow>
#include <QSocketNotifier>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include <unistd.h>

#include "platform/linux/session/SessionWindowManagement.h"

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    // The window has not the application id that task bars activate it by, so that only the token
    // can bring it to the front.
    const auto management = tavo::makeSessionWindowManagement(tavo::StartEnvironment::capture());
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
