// Stops the blinking of text cursors when the user is idle.
#pragma once

#include <QBasicTimer>
#include <QObject>
#include <chrono>
#include <optional>

namespace tavo {

// Text cursors stop blinking ten seconds after the last input and start again with the next input.
// Each blink wakes the processor, twice a second, and a launcher may be open all day. One object
// serves all windows. Made after the QApplication; main thread.
class CursorBlinkTimeout final : public QObject {
public:
    CursorBlinkTimeout();

    // Absent: Qt's own time. Zero: cursors do not blink.
    void setBlinkTime(std::optional<std::chrono::milliseconds> time);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    const int qtsFlashTime_;  // in milliseconds, like that of the desktop
    int flashTime_;
    QBasicTimer idle_;
};

}  // namespace tavo
