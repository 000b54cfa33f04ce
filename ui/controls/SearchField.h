// The search field of the toolbar.
#pragma once

#include <QWidget>
#include <functional>

class QLineEdit;

namespace tavo {

// A magnifying glass and a line to type in. Shows the query it is given and reports what is typed;
// keeps nothing else. Main thread.
class SearchField final : public QWidget {
public:
    explicit SearchField(QWidget* parent);

    // Does not report back.
    void setText(const QString& text);
    [[nodiscard]] QString text() const;

    // Takes the keyboard, with everything selected when `selectAll`.
    void take(bool selectAll);

    // Hands a key press on to the line, as if typed there.
    void type(QKeyEvent& event);

    [[nodiscard]] QWidget* line() const;

    std::function<void(const QString&)> onEdited;
    std::function<void()> onSubmit;

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void applyAppearance();

    QLineEdit* line_;
    bool showing_ = false;  // the model's text, which nobody typed
};

}  // namespace tavo
