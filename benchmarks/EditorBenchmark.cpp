// The time from the user's input to the painted frame with many categories, drawn without a screen:
// to open the editor and scroll its list, to redraw the window, to open the suggestion menu and a
// tile's menu.
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <algorithm>
#include <ctime>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "tests/catalogue/ModelHarness.h"
#include "tests/fakes/FakeIconSource.h"
#include "tests/ui/MadeUpView.h"
#include "ui/controls/LauncherStyle.h"
#include "ui/editor/CategoryEditorList.h"
#include "ui/grid/TileGrid.h"
#include "ui/window/LauncherView.h"

namespace tavo {
namespace {

constexpr int kApplications = 200;

// A window with `categoryCount` categories, in groups of a main one, its child and grandchild.
class World {
public:
    explicit World(int categoryCount) : harness_("it_IT") {
        std::vector<std::string> names;
        for (int i = 0; i < kApplications; ++i) {
            names.push_back("Applicazione " + std::to_string(i));
        }
        harness_.install(names);
        std::vector<LauncherCategory> categories;
        StringDictionary rules;
        for (int i = 0; i < categoryCount; ++i) {
            const std::string id = "id" + std::to_string(i);
            const std::string parent = "id" + std::to_string(i - 1);
            categories.emplace_back(id, "Categoria " + std::to_string(i),
                                    i % 3 == 0 ? std::nullopt : std::optional(parent));
            rules[id] = "parola" + std::to_string(i) + ", altra";
        }
        harness_.store(categories);
        harness_.storeRules(rules);
        view_ = makeMadeUpView(harness_, icons_);
        view_->resize(980, 640);
        view_->show();
        QCoreApplication::processEvents();
    }

    // Does everything that the input led to, painting included.
    void paint() {
        QCoreApplication::sendPostedEvents();
        view_->repaint();
    }

    QAbstractButton& button(const QString& name) {
        for (auto* const found : view_->findChildren<QAbstractButton*>()) {
            if (found->accessibleName() == name || found->text() == name) {
                return *found;
            }
        }
        throw std::logic_error("no such button");
    }
    template<typename Widget>
    Widget& part() {
        for (auto* const found : view_->findChildren<QWidget*>()) {
            if (auto* const wanted = dynamic_cast<Widget*>(found)) {
                return *wanted;
            }
        }
        throw std::logic_error("no such part");
    }
    void openEditor() { button(QStringLiteral("Modifica categorie")).click(); }
    void closeEditor() {
        button(QStringLiteral("Annulla")).click();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    LauncherView& view() { return *view_; }

private:
    ModelHarness harness_;
    FakeIconSource icons_;
    std::unique_ptr<LauncherView> view_;
};

// The processor time that this thread takes for `work`, so that other programs do not count.
double seconds(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    };
    const double start = now();
    work();
    return now() - start;
}

void openingTheEditor(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.SetIterationTime(seconds([&] {
            world.openEditor();
            world.paint();
        }));
        if (world.part<CategoryEditorList>().rowCount() != state.range(0)) {
            state.SkipWithError("the editor has another number of rows");
        }
        world.closeEditor();
    }
}

void scrollingTheEditor(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    world.openEditor();
    world.paint();
    QScrollBar& bar = *world.part<CategoryEditorList>().verticalScrollBar();
    double longest = 0;
    for (auto _ : state) {
        if (bar.value() == bar.maximum()) {
            bar.setValue(0);
            world.paint();
        }
        const double time = seconds([&] {
            bar.setValue(bar.value() + 33);  // a third of a row, a notch of the wheel
            world.paint();
        });
        longest = std::max(longest, time);
        state.SetIterationTime(time);
    }
    state.counters["longest_ms"] = longest * 1e3;
    world.closeEditor();
}

// Scrolls to the last row, whose menu of parents has the most candidates.
void jumpingToTheEndOfTheEditor(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    world.openEditor();
    world.paint();
    QScrollBar& bar = *world.part<CategoryEditorList>().verticalScrollBar();
    for (auto _ : state) {
        bar.setValue(0);
        world.paint();
        state.SetIterationTime(seconds([&] {
            bar.setValue(bar.maximum());
            world.paint();
        }));
    }
    world.closeEditor();
}

// Makes all rows, as for a screen reader that goes through the whole list.
void makingEveryRowOfTheEditor(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    const auto residentMegabytes = [] {
        std::ifstream file("/proc/self/statm");
        long size = 0;
        long resident = 0;
        file >> size >> resident;
        return static_cast<double>(resident) * 4096 / 1e6;
    };
    for (auto _ : state) {
        world.openEditor();
        auto& rows = world.part<CategoryEditorList>();
        const double before = residentMegabytes();
        state.SetIterationTime(seconds([&] {
            for (int row = 0; row < rows.rowCount(); ++row) {
                rows.rowAt(row);
            }
        }));
        state.counters["MB"] = residentMegabytes() - before;
        world.closeEditor();
    }
}

void typingANameInTheEditor(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    world.openEditor();
    world.paint();
    QLineEdit* field = nullptr;
    for (auto* const found : world.view().findChildren<QLineEdit*>()) {
        if (found->placeholderText() == QStringLiteral("Nome categoria") && found->isVisible()) {
            field = found;
        }
    }
    if (field == nullptr) {
        state.SkipWithError("no row to type in");
        return;
    }
    bool longer = false;
    for (auto _ : state) {
        longer = !longer;
        state.SetIterationTime(seconds([&] {
            field->setText(longer ? QStringLiteral("Nomi") : QStringLiteral("Nom"));
            world.paint();
        }));
    }
    world.closeEditor();
}

void aKeystrokeInTheSearch(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    QLineEdit& line = *world.view().findChild<QLineEdit*>();
    bool typed = false;
    for (auto _ : state) {
        typed = !typed;
        state.SetIterationTime(seconds([&] {
            line.setText(typed ? QStringLiteral("1") : QString());
            world.paint();
        }));
    }
}

QMenu& openMenu() {
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) {
        throw std::logic_error("no menu is open");
    }
    return *menu;
}

void openingTheSuggestions(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.SetIterationTime(seconds([&] {
            world.button(QStringLiteral("Suggerimenti di ricerca")).click();
            openMenu().repaint();
        }));
        openMenu().close();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void openingATilesCategories(benchmark::State& state) {
    World world(static_cast<int>(state.range(0)));
    auto& grid = world.part<TileGrid>();
    const QPoint middle = grid.itemRect(0).center();
    for (auto _ : state) {
        state.SetIterationTime(seconds([&] {
            QContextMenuEvent event(QContextMenuEvent::Mouse, middle,
                                    grid.viewport()->mapToGlobal(middle));
            QCoreApplication::sendEvent(grid.viewport(), &event);
            openMenu().repaint();
            QAction* const categories = openMenu().actions().last();
            openMenu().setActiveAction(categories);
            if (categories->menu() != nullptr) {
                categories->menu()->popup({});
                categories->menu()->repaint();
            }
        }));
        while (QApplication::activePopupWidget() != nullptr) {
            QApplication::activePopupWidget()->close();
        }
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void register_(const char* name, void (*measure)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, measure)
        ->Arg(200)
        ->Arg(5'000)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime();
}

}  // namespace
}  // namespace tavo

int main(int argc, char** argv) {
    using namespace tavo;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    QApplication::setStyle(new LauncherStyle);
    QApplication application(argc, argv);
    register_("editor/open", openingTheEditor);
    register_("editor/scroll a step", scrollingTheEditor);
    register_("editor/jump to the end", jumpingToTheEndOfTheEditor);
    register_("editor/make every row", makingEveryRowOfTheEditor);
    register_("editor/type a name", typingANameInTheEditor);
    register_("window/keystroke", aKeystrokeInTheSearch);
    register_("window/suggestions", openingTheSuggestions);
    register_("window/categories of a tile", openingATilesCategories);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
