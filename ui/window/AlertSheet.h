// An error message in a sheet.
#pragma once

#include <QString>

#include "ui/controls/Sheet.h"

class QLabel;
class QPushButton;

namespace tavo {

// A title, a message and the button "OK", which Return and Esc press as well. The message is plain
// text. A message that is too long for the window is shortened with an ellipsis; screen readers get
// all of it. Main thread.
class AlertSheet final : public Sheet {
public:
    AlertSheet(const QString& title, QWidget* parent);

    // Replaces the message.
    void setMessage(const QString& message);

protected:
    [[nodiscard]] QSize cardSize(QSize available) const override;
    [[nodiscard]] QWidget& firstFocus() const override;
    void submit() override;

private:
    [[nodiscard]] int cardHeight() const;
    [[nodiscard]] int messageHeight() const;
    void cutMessage(int height) const;

    QString text_;
    mutable int width_ = 0;  // of the card
    // In the order in which screen readers read them.
    QLabel* title_;
    QLabel* message_;
    QPushButton* ok_;
};

}  // namespace tavo
