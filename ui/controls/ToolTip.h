// Where tool tips are shown.
#pragma once

#include <QRect>
#include <QString>

class QWidget;

namespace tavo {

enum class ToolTipSide { Below, Right };

// Shows `text`, made by toolTipText(), as the tool tip of `owner`. It covers nothing of `clear`, an
// area of the screen: it is on the given side of it, or opposite where the screen ends. It goes as
// Qt's tool tips go. An empty text hides the tool tip. Main thread.
void showToolTip(const QString& text, QWidget& owner, const QRect& clear,
                 ToolTipSide side = ToolTipSide::Below);

}  // namespace tavo
