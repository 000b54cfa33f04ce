#include "ui/ToolkitTexts.h"

#include <array>
#include <string_view>
#include <utility>

namespace tavo {

QString ToolkitTexts::translate(const char* context, const char* sourceText, const char*,
                                int) const {
    const std::string_view where = context;
    if (where != "QLineEdit" && where != "QWidgetTextControl") {
        return {};
    }
    static constexpr std::array<std::pair<std::string_view, QStringView>, 8> kTexts = {{
        {"&Undo", u"&Annulla"},
        {"&Redo", u"&Ripeti"},
        {"Cu&t", u"&Taglia"},
        {"&Copy", u"&Copia"},
        {"&Paste", u"&Incolla"},
        {"Delete", u"Elimina"},
        {"Select All", u"Seleziona tutto"},
        {"Copy &Link Location", u"Copia indirizzo"},
    }};
    for (const auto& [source, italian] : kTexts) {
        if (source == sourceText) {
            return italian.toString();
        }
    }
    return {};
}

}  // namespace tavo
