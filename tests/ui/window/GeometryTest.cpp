#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include <gtest/gtest.h>

#include "tests/ui/Geometry.h"
#include "ui/controls/SymbolButton.h"
#include "ui/controls/TextLabel.h"

namespace tavo {
namespace {

class Geometry : public testing::Test {
protected:
    Geometry() { window.resize(400, 300); }

    std::string problems() {
        window.show();
        return layoutProblems(window).join(u'\n').toStdString();
    }

    QWidget window;
};

TEST_F(Geometry, a_window_in_order_has_no_problems) {
    auto* const label = new QLabel(QStringLiteral("Testo"), &window);
    label->setGeometry(10, 10, 100, 30);
    auto* const button = new QPushButton(QStringLiteral("Bottone"), &window);
    button->setGeometry(120, 10, 200, 40);
    EXPECT_EQ(problems(), "");
}

TEST_F(Geometry, what_overlaps_is_named) {
    auto* const first = new QWidget(&window);
    first->setGeometry(10, 10, 100, 30);
    auto* const second = new QWidget(&window);
    second->setGeometry(109, 39, 100, 30);
    EXPECT_NE(problems().find("overlaps"), std::string::npos);
    second->hide();
    EXPECT_EQ(problems(), "");
}

TEST_F(Geometry, what_reaches_beyond_its_parent_is_named) {
    auto* const child = new QWidget(&window);
    child->setGeometry(-1, 10, 100, 30);
    EXPECT_NE(problems().find("reaches beyond"), std::string::npos);
}

TEST_F(Geometry, a_label_that_cuts_its_text_is_named_and_one_that_elides_is_not) {
    auto* const cutting = new QLabel(QStringLiteral("Un testo più lungo dello spazio"), &window);
    cutting->setGeometry(10, 10, 50, 30);
    EXPECT_NE(problems().find("its text needs"), std::string::npos);
    cutting->hide();
    auto* const eliding = new TextLabel(QApplication::font(), &Appearance::text, &window);
    eliding->setText(QStringLiteral("Un testo più lungo dello spazio"));
    eliding->setGeometry(10, 50, 50, 30);
    eliding->show();
    EXPECT_EQ(problems(), "");
    EXPECT_TRUE(eliding->shownText().endsWith(u'…'));
}

TEST_F(Geometry, lines_that_do_not_fit_below_one_another_are_named) {
    auto* const label = new QLabel(QStringLiteral("Un testo che ha bisogno di più righe"), &window);
    label->setWordWrap(true);
    label->setGeometry(10, 10, 60, 20);
    EXPECT_NE(problems().find("its lines need"), std::string::npos);
}

TEST_F(Geometry, a_button_that_cuts_its_text_is_named_and_one_that_elides_is_not) {
    auto* const cutting = new QPushButton(QStringLiteral("Un bottone dal testo lungo"), &window);
    cutting->setGeometry(10, 10, 60, 40);
    EXPECT_NE(problems().find("what it shows needs"), std::string::npos);
    cutting->hide();
    auto* const eliding =
        new SymbolButton(u"trash", QStringLiteral("Un bottone dal testo lungo"), {}, &window);
    eliding->setGeometry(10, 60, 80, eliding->sizeHint().height());
    eliding->show();
    EXPECT_EQ(problems(), "");
    EXPECT_TRUE(eliding->shownText().endsWith(u'…'));
    EXPECT_TRUE(eliding->toolTip().contains(QStringLiteral("Un bottone dal testo lungo")));
}

}  // namespace
}  // namespace tavo
