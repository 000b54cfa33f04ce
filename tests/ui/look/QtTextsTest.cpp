#include <QAccessibleActionInterface>
#include <QAction>
#include <QCoreApplication>
#include <QLineEdit>
#include <QMenu>

#include <gtest/gtest.h>

#include "ui/look/QtTexts.h"

namespace tavo {
namespace {

TEST(QtTexts, the_menu_of_a_text_field_is_italian) {
    QtTexts texts;
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

// A control with every accessibility action, whose names and descriptions Qt provides.
class Anything final : public QAccessibleActionInterface {
public:
    QStringList actionNames() const override {
        return {pressAction(),    increaseAction(), decreaseAction(),
                showMenuAction(), setFocusAction(), toggleAction()};
    }
    void doAction(const QString&) override {}
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
};

TEST(QtTexts, what_can_be_done_with_a_control_is_said_in_italian) {
    QtTexts texts;
    QCoreApplication::installTranslator(&texts);
    const Anything control;
    for (const QString& action : control.actionNames()) {
        SCOPED_TRACE(action.toStdString());
        EXPECT_NE(control.localizedActionName(action), action);
        QCoreApplication::removeTranslator(&texts);
        const QString english = control.localizedActionDescription(action);
        QCoreApplication::installTranslator(&texts);
        EXPECT_NE(control.localizedActionDescription(action), english);
    }
    EXPECT_EQ(control.localizedActionName(control.pressAction()), QStringLiteral("Premi"));
    QCoreApplication::removeTranslator(&texts);
}

}  // namespace
}  // namespace tavo
