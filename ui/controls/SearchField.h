// The search field of the toolbar.
#pragma once

#include <QWidget>
#include <functional>

class QLineEdit;

namespace tavo {

// A magnifying glass and a line edit, with a ring around them while it has the keyboard focus.
// Shows the text it is given, and reports what the user types. Main thread.
class SearchField final : public QWidget {
public:
    explicit SearchField(QWidget* parent);

    // Does not call `onEdited`.
    void setText(const QString& text);
    [[nodiscard]] QString text() const;

    // Takes the keyboard focus. Selects all of the text if `selectAll`.
    void take(bool selectAll);

    // Handles a key press as if it had been typed in the line edit.
    void type(QKeyEvent& event);

    [[nodiscard]] QWidget* line() const;

    std::function<void(const QString&)> onEdited;
    std::function<void()> onSubmit;

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void applyAppearance();
    void placeLine();
    void fitPrompt();

    QLineEdit* line_;
};

}  // namespace tavo
