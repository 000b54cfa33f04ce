// The toolkit's own texts in the window's language.
#pragma once

#include <QTranslator>

namespace tavo {

// What the menus of text fields say, and what screen readers say can be done with a control.
// Installed into the application; every other text of the toolkit stays as it is.
class ToolkitTexts final : public QTranslator {
public:
    using QTranslator::QTranslator;

    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* sourceText,
                                    const char* disambiguation, int count) const override;
};

}  // namespace tavo
