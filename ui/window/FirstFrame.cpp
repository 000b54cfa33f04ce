#include "ui/window/FirstFrame.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <utility>

namespace tavo {
namespace {

// Far longer than a window in view takes to be painted.
constexpr std::chrono::milliseconds kPatience{500};

class FirstFrame final : public QObject {
public:
    FirstFrame(QWidget& window, std::function<void()> block)
        : QObject(&window), block_(std::move(block)) {
        window.installEventFilter(this);
        timer_.setSingleShot(true);
        connect(&timer_, &QTimer::timeout, this, [this] {
            parent()->removeEventFilter(this);
            block_();
            deleteLater();
        });
    }

protected:
    bool eventFilter(QObject* window, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            timer_.start(kPatience);
        } else if (event->type() == QEvent::Paint) {
            window->removeEventFilter(this);
            // In the next turn of the event loop, because the frame reaches the screen after this
            // event.
            timer_.start(0);
        }
        return false;
    }

private:
    const std::function<void()> block_;
    QTimer timer_;
};

}  // namespace

void afterFirstFrame(QWidget& window, std::function<void()> block) {
    new FirstFrame(window, std::move(block));
}

}  // namespace tavo
