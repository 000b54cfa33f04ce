// The application object.
#pragma once

#include <QApplication>

namespace tavo {

// Quits at once when the session ends or the desktop asks for it. Qt would ask the window to close
// first, which only hides it. Tells the session manager not to restart the program at the next
// login: only an autostart entry of the user does that.
class LauncherQApplication final : public QApplication {
public:
    LauncherQApplication(int& argc, char** argv);

    // Ends the event loop, even if another start has just asked for the window. For signals that
    // end the program, such as SIGTERM. wasToldToEnd() is true from then on.
    void endAtOnce();
    [[nodiscard]] bool wasToldToEnd() const { return toldToEnd_; }

protected:
    bool event(QEvent* event) override;

private:
    bool toldToEnd_ = false;
};

}  // namespace tavo
