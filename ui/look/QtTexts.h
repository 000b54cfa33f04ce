// Italian translations of Qt's own texts.
#pragma once

#include <QTranslator>

namespace tavo {

// Translates the context menus of text fields and the names of accessibility actions. All other
// texts of Qt stay English. Installed in the QApplication.
class QtTexts final : public QTranslator {
public:
    using QTranslator::QTranslator;

    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* sourceText,
                                    const char* disambiguation, int count) const override;
};

}  // namespace tavo
