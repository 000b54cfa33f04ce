// A caret that comes to rest.
#pragma once

#include <QBasicTimer>
#include <QObject>

namespace tavo {

// Stops the blinking of every caret ten seconds after the last input, and lets it go on with the
// next: a launcher that lies open all day must not wake the machine twice a second. Made after the
// application object, one for all windows; main thread.
class CursorBlinkTimeout final : public QObject {
public:
    CursorBlinkTimeout();
    ~CursorBlinkTimeout() override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    int blinking_;  // milliseconds, as the desktop wants it
    QBasicTimer resting_;
};

}  // namespace tavo
