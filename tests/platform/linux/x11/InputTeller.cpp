// Shows a window, and prints at each event which time of the user's last input is known: "ready
// TIME" once it has the focus, then "key TIME", "button TIME", "move TIME", with "none" for no
// time.
#include <QEvent>
#include <QGuiApplication>
#include <QRasterWindow>
#include <cstdio>

#include "platform/linux/x11/XcbUserTime.h"

namespace {

class Window final : public QRasterWindow {
public:
    bool event(QEvent* event) override {
        switch (event->type()) {
            case QEvent::FocusIn:
                say("ready");
                break;
            case QEvent::KeyPress:
                say("key");
                break;
            case QEvent::MouseButtonPress:
                say("button");
                break;
            case QEvent::MouseMove:
                say("move");
                break;
            default:
                break;
        }
        return QRasterWindow::event(event);
    }

private:
    void say(const char* what) {
        const auto time = userTime_();
        std::printf("%s %s\n", what, time ? std::to_string(*time).c_str() : "none");
        std::fflush(stdout);
    }

    const std::function<std::optional<std::uint32_t>()> userTime_ = tavo::watchXcbUserTime();
};

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    Window window;
    window.setGeometry(100, 100, 300, 200);
    window.show();
    return QGuiApplication::exec();
}
