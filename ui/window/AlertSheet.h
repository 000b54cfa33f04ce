// A message that must be read, as a sheet inside the window.
#pragma once

#include <QString>

#include "ui/controls/Sheet.h"

class QLabel;
class QPushButton;

namespace tavo {

// A title, a message and "OK"; Return and Esc press it. The message is plain text; what the window
// has no room for is cut with an ellipsis, but not to a screen reader. Main thread.
class AlertSheet final : public Sheet {
public:
    AlertSheet(const QString& title, QWidget* parent);

    // The message to show, in place of an older one.
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
    // Made in the order in which a screen reader reads them.
    QLabel* title_;
    QLabel* message_;
    QPushButton* ok_;
};

}  // namespace tavo
