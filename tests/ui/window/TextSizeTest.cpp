#include <QAbstractButton>
#include <QApplication>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QtTest/QTest>
#include <cmath>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"
#include "tests/fakes/FakeIconSource.h"
#include "tests/ui/Geometry.h"
#include "tests/ui/MadeUpView.h"
#include "ui/controls/SymbolButton.h"
#include "ui/controls/TextLabel.h"
#include "ui/grid/AppTile.h"
#include "ui/grid/TileGrid.h"
#include "ui/look/Appearance.h"
#include "ui/look/ElidedText.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextScale.h"
#include "ui/sidebar/SidebarList.h"
#include "ui/window/AlertSheet.h"
#include "ui/window/LauncherView.h"

namespace tavo {
namespace {

constexpr char kLongName[] = "Applicazione con un nome tanto lungo che non ha posto";

struct Face {
    const char* family;
    int stretch;  // in hundredths
};

void PrintTo(const Face& face, std::ostream* out) {
    *out << face.family << " " << face.stretch;
}

// The smallest window in several fonts, with text of every size.
class TextSize : public testing::TestWithParam<Face> {
protected:
    TextSize() {
        const QString family = QString::fromUtf8(GetParam().family);
        EXPECT_TRUE(QFontDatabase::families().contains(family)) << "not installed";
        QFont font(family, 10);
        font.setStretch(GetParam().stretch);
        QApplication::setFont(font);
        world.install({"Note", "Calcolatrice", "Posta", "Visualizzatore", kLongName});
        view_ = makeMadeUpView(world, icons);
        view_->resize(760, 520);
        view_->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view_.get()));
    }
    ~TextSize() override {
        view_.reset();
        setTextScale(1);
        QApplication::setFont(before_);
    }

    void expectInOrder() {
        for (int turn = 0; turn < 3; ++turn) {
            QCoreApplication::processEvents();
        }
        EXPECT_EQ(layoutProblems(*view_).join(u'\n').toStdString(), "");
    }

    template<typename List>
    List& list() {
        for (auto* const area : view_->findChildren<QAbstractScrollArea*>()) {
            if (auto* const found = dynamic_cast<List*>(area)) {
                return *found;
            }
        }
        throw std::logic_error("no such list");
    }

    // The texts of the window that are shown with an ellipsis.
    std::set<QString> cutTexts() {
        std::set<QString> cut;
        for (auto* const label : view_->findChildren<QLabel*>()) {
            const auto* const text = dynamic_cast<TextLabel*>(label);
            if (text != nullptr && text->isVisible() && text->shownText() != text->text()) {
                cut.insert(text->text());
            }
        }
        for (auto* const button : view_->findChildren<QAbstractButton*>()) {
            const auto* const symbol = dynamic_cast<SymbolButton*>(button);
            if (symbol != nullptr && symbol->isVisible() && symbol->shownText() != button->text()) {
                cut.insert(button->text());
            }
        }
        for (auto* const line : view_->findChildren<QLineEdit*>()) {
            const int room = line->contentsRect().width() - 4;
            if (line->isVisible() && line->text().isEmpty() &&
                line->fontMetrics().horizontalAdvance(line->placeholderText()) > room) {
                cut.insert(line->placeholderText());
            }
        }
        const auto& rows = list<SidebarList>();
        for (int index = 0; index < rows.itemCount(); ++index) {
            if (rows.elided(index) != rows.itemName(index)) {
                cut.insert(rows.itemName(index));
            }
        }
        const auto& grid = list<TileGrid>();
        const QFontMetrics names(interfaceFont(metrics::kTileName));
        for (int index = 0; index < grid.itemCount(); ++index) {
            const QString name = grid.itemName(index).mid(5);  // without "Apri "
            if (fitted(name, names, AppTile::mainRect(grid.itemRect(index)).width()) != name) {
                cut.insert(name);
            }
        }
        return cut;
    }

    void press(const QString& text) {
        for (auto* const button : view_->findChildren<QAbstractButton*>()) {
            if (button->text() == text) {
                button->click();
                return;
            }
        }
        FAIL() << "no button " << text.toStdString();
    }

    ModelHarness world;
    FakeIconSource icons;
    std::unique_ptr<LauncherView> view_;

private:
    const QFont before_ = QApplication::font();
};

TEST_P(TextSize, what_could_be_read_at_the_usual_size_can_be_read_at_all_up_to_twice_that) {
    expectInOrder();
    const std::set<QString> before = cutTexts();
    EXPECT_TRUE(before.contains(QString::fromUtf8(kLongName)));
    for (const double scale : {1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 0.75, 1.0}) {
        SCOPED_TRACE(scale);
        setTextScale(scale);
        expectInOrder();
        for (const QString& text : cutTexts()) {
            EXPECT_TRUE(before.contains(text)) << text.toStdString();
        }
    }
}

TEST_P(TextSize, nothing_overlaps_at_the_largest_size) {
    setTextScale(3);
    expectInOrder();
}

TEST_P(TextSize, the_editor_has_all_of_it_at_twice_the_size) {
    for (const double scale : {1.0, 2.0}) {
        SCOPED_TRACE(scale);
        setTextScale(scale);
        press(QStringLiteral("Modifica categorie"));
        expectInOrder();
        setTextScale(3 - scale);  // also while it is open
        expectInOrder();
        press(QStringLiteral("Annulla"));
        QCoreApplication::processEvents();
    }
}

TEST_P(TextSize, the_alert_says_all_that_it_says_at_the_usual_size) {
    AlertSheet alert(QStringLiteral("Impossibile aprire l’app"), view_.get());
    QString message;
    for (int word = 0; word < 60; ++word) {
        message += QStringLiteral("parola%1 ").arg(word);
    }
    alert.setMessage(message.trimmed());
    alert.present();
    const auto saysAll = [&] {
        for (const QLabel* const label : alert.findChildren<QLabel*>()) {
            if (label->text().contains(QStringLiteral("parola59"))) {
                return true;
            }
        }
        return false;
    };
    for (const double scale : {1.0, 1.5, 2.0}) {
        setTextScale(scale);
        expectInOrder();
        EXPECT_TRUE(saysAll()) << scale;
    }
}

INSTANTIATE_TEST_SUITE_P(Faces, TextSize,
                         testing::Values(Face{"Inter", 100}, Face{"Inter", 120},
                                         Face{"DejaVu Sans", 100}, Face{"DejaVu Sans", 120},
                                         Face{"Noto Sans", 100}, Face{"Noto Sans", 120}));

TEST(TextScale, is_between_a_half_and_three_whatever_is_asked_for) {
    for (const auto& [asked, got] : std::vector<std::pair<double, double>>{
             {1.25, 1.25}, {0, 0.5}, {-1, 0.5}, {50, 3}, {std::nan(""), 1}}) {
        setTextScale(asked);
        EXPECT_EQ(textScale(), got) << asked;
    }
    setTextScale(1);
}

}  // namespace
}  // namespace tavo
