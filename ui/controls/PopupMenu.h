// The program's menus.
#pragma once

#include <QElapsedTimer>
#include <QMenu>
#include <functional>

namespace tavo {

// A menu that is opened once: when it closes, it deletes itself and gives the keyboard focus back
// to the widget that had it. Separators are kept where they were added, also at the end. Symbols
// have the colour of the text beside them, also after the palette has changed.
//
// When an entry is chosen (with the pointer, the keyboard or by an accessibility client), the menu
// and its parent menus close first, then the entry's function is called. A letter typed while the
// menu is open moves to the next entry with a word that begins with it. Main thread.
class PopupMenu final : public QMenu {
public:
    // `name` is the accessible name. The window of `owner` is its parent, which deletes the menu if
    // it is never opened. While it is open it is a child of that window in the accessibility tree.
    PopupMenu(const QString& name, QWidget* owner);

    // Adds an entry with a symbol before its text. With an empty symbol the space for it stays
    // free. Ampersands in `text` are doubled, as menuText() does.
    QAction* addEntry(const QString& text, QStringView symbol, std::function<void()> chosen);

    // Adds an entry with a tick box. Choosing it calls `chosen` and leaves the tick as it is.
    QAction* addTick(const QString& text, bool ticked, std::function<void()> chosen);

    // Adds an entry that opens a submenu. An empty submenu does not open.
    PopupMenu* addSubmenu(const QString& text);

    // What the user opens a menu with. One that a key (or a screen reader) opens has its first
    // entry chosen, so that the next key acts on an entry and a screen reader has one to read.
    enum class By { Pointer, Key };

    void openAt(QPoint globalPosition, By by);

    // Opens below the control, or above it where there is not enough space below.
    void openAt(const QWidget& control, By by);

    void setVisible(bool visible) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void choose(const std::function<void()>& chosen);
    void goTo(const QString& typed);

    QString typed_;
    QElapsedTimer sinceTyped_;
};

}  // namespace tavo
