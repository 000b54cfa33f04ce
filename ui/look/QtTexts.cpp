#include "ui/look/QtTexts.h"

#include <array>
#include <string_view>

namespace tavo {
namespace {

struct Text {
    std::string_view source;
    QStringView italian;
};

// The texts of the context menus of text fields and of labels with selectable text.
constexpr std::array<Text, 8> kMenuTexts = {{
    {"&Undo", u"&Annulla"},
    {"&Redo", u"&Ripeti"},
    {"Cu&t", u"&Taglia"},
    {"&Copy", u"&Copia"},
    {"&Paste", u"&Incolla"},
    {"Delete", u"Elimina"},
    {"Select All", u"Seleziona tutto"},
    {"Copy &Link Location", u"Copia indirizzo"},
}};

// The names and descriptions of the actions of a control, as a screen reader reads them.
constexpr std::array<Text, 13> kActionTexts = {{
    {"Press", u"Premi"},
    {"Increase", u"Aumenta"},
    {"Decrease", u"Riduci"},
    {"ShowMenu", u"Mostra menu"},
    {"SetFocus", u"Vai qui"},
    {"Toggle", u"Cambia stato"},
    {"Triggers the action", u"Esegue l’azione"},
    {"Increase the value", u"Aumenta il valore"},
    {"Decrease the value", u"Riduce il valore"},
    {"Shows the menu", u"Mostra il menu"},
    {"Sets the focus", u"Porta qui la tastiera"},
    {"Toggles the state", u"Cambia lo stato"},
    {"Open the combo box selection popup", u"Apre l’elenco delle scelte"},
}};

template<std::size_t size>
QString find(const std::array<Text, size>& texts, std::string_view source) {
    for (const Text& text : texts) {
        if (text.source == source) {
            return text.italian.toString();
        }
    }
    return {};
}

}  // namespace

QString QtTexts::translate(const char* context, const char* sourceText, const char*, int) const {
    const std::string_view where = context;
    if (where == "QLineEdit" || where == "QWidgetTextControl") {
        return find(kMenuTexts, sourceText);
    }
    if (where == "QAccessibleActionInterface" || where == "QComboBox") {
        return find(kActionTexts, sourceText);
    }
    return {};
}

}  // namespace tavo
