// Shows a window. At the first key pressed in it, asks three times for an activation token, and
// prints each answer: "token TEXT", or "none".
#include <QGuiApplication>
#include <QRasterWindow>
#include <cstdio>
#include <memory>

#include "platform/linux/wayland/WaylandActivationTokens.h"

namespace {

class AskingWindow : public QRasterWindow {
protected:
    void keyPressEvent(QKeyEvent* /*event*/) override {
        for (; left_ > 0; --left_) {
            const auto token = tokens_->token("org.example.Started");
            std::printf("%s\n", token ? ("token " + *token).c_str() : "none");
        }
        std::fflush(stdout);
    }

private:
    const std::unique_ptr<tavo::ActivationTokens> tokens_ = tavo::makeWaylandActivationTokens();
    int left_ = 3;
};

}  // namespace

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("org.example.Asker"));
    AskingWindow window;
    window.resize(100, 80);
    window.show();
    return QGuiApplication::exec();
}
