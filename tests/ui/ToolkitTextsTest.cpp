#include <QAction>
#include <QCoreApplication>
#include <QLineEdit>
#include <QMenu>

#include <gtest/gtest.h>

#include "ui/ToolkitTexts.h"

namespace tavo {
namespace {

TEST(ToolkitTexts, the_menu_of_a_text_field_is_italian) {
    ToolkitTexts texts;
    QCoreApplication::installTranslator(&texts);
    QLineEdit line;
    const std::unique_ptr<QMenu> menu(line.createStandardContextMenu());
    QStringList entries;
    for (const QAction* const action : menu->actions()) {
        if (!action->isSeparator()) {
            entries << action->text().section(u'\t', 0, 0).remove(u'&');
        }
    }
    QCoreApplication::removeTranslator(&texts);
    EXPECT_EQ(
        entries,
        QStringLiteral("Annulla,Ripeti,Taglia,Copia,Incolla,Elimina,Seleziona tutto").split(u','));
}

}  // namespace
}  // namespace tavo
