// The menus that the program opens.
#pragma once

#include <QElapsedTimer>
#include <QMenu>
#include <functional>

namespace tavo {

// A menu that is made to be opened once: it deletes itself when it closes, and gives the keyboard
// back to whoever had it. Entries keep their order and their dividers, also at the end. Symbols
// are tinted like the text beside them, whatever the palette becomes.
//
// However an entry is chosen, by pointer, keyboard or accessibility tree, the menu and all menus it
// belongs to close first, then what was chosen happens. Letters typed while it is open go to the
// next entry with a word that begins with them. Main thread.
class PopupMenu final : public QMenu {
public:
    // `name` is what a screen reader calls it. It belongs to the window of `owner`, which deletes
    // it if nobody opens it, and is the window's child in the accessibility tree while it is open.
    PopupMenu(const QString& name, QWidget* owner);

    // An entry with a symbol before its text; an empty one leaves the place blank. In `text` an
    // ampersand is written twice.
    QAction* addEntry(const QString& text, QStringView symbol, std::function<void()> chosen);

    // An entry that says whether something is so. Choosing it changes nothing by itself.
    QAction* addTick(const QString& text, bool ticked, std::function<void()> chosen);

    // An entry that opens another menu. Without entries that menu opens nothing.
    PopupMenu* addSubmenu(const QString& text);

    void openAt(QPoint globalPosition);

    // Below the control, or above it where there is no room below.
    void openAt(const QWidget& control);

    void setVisible(bool visible) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void choose(const std::function<void()>& chosen);
    void goTo(const QString& typed);

    QString typed_;
    QElapsedTimer sinceTyped_;
};

}  // namespace tavo
