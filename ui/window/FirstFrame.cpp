#include "ui/window/FirstFrame.h"

#include <QEvent>
#include <QWidget>
#include <utility>

namespace tavo {
namespace {

class FirstFrame final : public QObject {
public:
    FirstFrame(QWidget& window, std::function<void()> block)
        : QObject(&window), block_(std::move(block)) {
        window.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* window, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            window->removeEventFilter(this);
            // In the next turn of the event loop, because the frame reaches the screen after this
            // event.
            QMetaObject::invokeMethod(
                this,
                [this] {
                    block_();
                    deleteLater();
                },
                Qt::QueuedConnection);
        }
        return false;
    }

private:
    const std::function<void()> block_;
};

}  // namespace

void afterFirstFrame(QWidget& window, std::function<void()> block) {
    new FirstFrame(window, std::move(block));
}

}  // namespace tavo
