// The application object.
#pragma once

#include <QApplication>

namespace tavo {

// A session that ends, or a desktop that asks the program to quit, is obeyed at once: the toolkit
// would ask the window first, which closing merely hides. A session's manager must not start the
// program again by itself; that is for the user's own autostart entries.
class LauncherQApplication final : public QApplication {
public:
    LauncherQApplication(int& argc, char** argv);

    // For whoever may ask so that no start of another process counts against it, as a session's
    // signals do: the event loop ends at once, and wasToldToEnd() is true from then on.
    void endAtOnce();
    [[nodiscard]] bool wasToldToEnd() const { return toldToEnd_; }

protected:
    bool event(QEvent* event) override;

private:
    bool toldToEnd_ = false;
};

}  // namespace tavo
