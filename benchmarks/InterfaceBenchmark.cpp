// The window's own work between an input and its picture, with 5,000 applications: from sending the
// event until everything it changed is painted, without waiting for a screen. The percentiles are
// of the main thread's processor time, which other programs do not disturb; the time is wall time.
// QT_QPA_PLATFORM chooses where it paints.
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QStyleFactory>
#include <QWheelEvent>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/ApplicationNames.h"
#include <benchmark/benchmark.h>

#include "tests/catalogue/ModelHarness.h"
#include "tests/fakes/FakeIconSource.h"
#include "tests/ui/MadeUpView.h"
#include "ui/grid/TileGrid.h"
#include "ui/window/LauncherView.h"

namespace tavo {
namespace {

constexpr int kApplications = 5'000;

enum class Icons { Held, Coming };

// The whole content of the window at its first size, with made-up applications.
class Window {
public:
    Window(int categories, Icons icons) {
        std::vector<std::string> names;
        for (int i = 0; i < kApplications; ++i) {
            names.push_back(applicationName(i));
        }
        world_.install(names);
        storeCategories(categories);
        if (icons == Icons::Held) {
            icons_.hold();
        }
        view_ = makeMadeUpView(world_, icons_);
        view_->resize(980, 640);
        view_->show();
        settle();
    }
    ~Window() {
        icons_.releaseAll();
        view_.reset();
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    // Runs until nothing is left to do: answers of other threads handled, everything painted.
    void settle() {
        world_.mainQueue.run();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents();
    }

    void key(Qt::Key key, const QString& text = {}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(view_->findChild<QLineEdit*>(), &press);
    }

    void wheel(int angle) {
        QWidget& viewport = *grid().viewport();
        const QPointF point = viewport.rect().center();
        QWheelEvent event(point, viewport.mapToGlobal(point), {}, QPoint(0, angle), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&viewport, &event);
    }

    TileGrid& grid() {
        for (auto* const area : view_->findChildren<QAbstractScrollArea*>()) {
            if (auto* const found = dynamic_cast<TileGrid*>(area)) {
                return *found;
            }
        }
        std::abort();
    }

private:
    void storeCategories(int count) {
        std::vector<LauncherCategory> categories;
        json::StringArrayDictionary assignments;
        for (int c = 0; c < count; ++c) {
            const std::string id = "id" + std::to_string(c);
            categories.emplace_back(id, "Gruppo " + std::to_string(c));
            assignments[id] = {ModelHarness::pathOf(applicationName(c))};
        }
        if (count > 0) {
            world_.store(categories);
            world_.defaults.holdValue(kAssignmentsKey, Data{*json::write(assignments)});
        }
    }

    ModelHarness world_{"it_IT"};
    FakeIconSource icons_;
    std::unique_ptr<LauncherView> view_;
};

// Notes whether `watched` is painted.
class PaintWatch final : public QObject {
public:
    explicit PaintWatch(QWidget& watched) { watched.installEventFilter(this); }
    bool painted = false;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        painted = painted || event->type() == QEvent::Paint;
        return false;
    }
};

// The processor time of this thread, in milliseconds.
double worked() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double percentile(std::vector<double> sorted, double share) {
    std::sort(sorted.begin(), sorted.end());
    return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

// One iteration is one input and everything that it causes.
void measure(benchmark::State& state, Window& window, const std::function<void(int)>& input) {
    PaintWatch watch(*window.grid().viewport());
    std::vector<double> work;
    int number = 0;
    for (auto _ : state) {
        watch.painted = false;
        const double before = worked();
        const auto start = std::chrono::steady_clock::now();
        input(number++);
        window.settle();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        if (!watch.painted) {
            state.SkipWithError("nothing was painted");
            return;
        }
        state.SetIterationTime(taken.count());
        work.push_back(worked() - before);
    }
    state.counters["work_p50_ms"] = percentile(work, 0.5);
    state.counters["work_p99_ms"] = percentile(work, 0.99);
    state.counters["work_most_ms"] = percentile(work, 1);
}

// Types the letters of a word one after the other, then deletes them again.
void typeAndErase(benchmark::State& state, int categories) {
    Window window(categories, Icons::Held);
    static const QString kWord = QStringLiteral("editor m");
    measure(state, window, [&](int number) {
        const int step = number % (2 * static_cast<int>(kWord.size()));
        if (step < kWord.size()) {
            window.key(Qt::Key_unknown, kWord.mid(step, 1));
        } else {
            window.key(Qt::Key_Backspace);
        }
    });
}

// Types and deletes one letter, which gives the longest lists.
void oneLetter(benchmark::State& state, int categories) {
    Window window(categories, Icons::Held);
    measure(state, window, [&](int number) {
        number % 2 == 0 ? window.key(Qt::Key_unknown, QStringLiteral("e"))
                        : window.key(Qt::Key_Backspace);
    });
}

// Turns the wheel down the list, while icons arrive, and at its end up again.
void scroll(benchmark::State& state, int categories) {
    Window window(categories, Icons::Coming);
    int direction = -1;
    measure(state, window, [&](int) {
        const QScrollBar& bar = *window.grid().verticalScrollBar();
        if (bar.value() == (direction < 0 ? bar.maximum() : bar.minimum())) {
            direction = -direction;
        }
        window.wheel(direction * 120);
    });
}

using Measurement = void (*)(benchmark::State&, int categories);

void registerAll(const char* name, Measurement measurement, int iterations) {
    for (const int categories : {0, 200}) {
        benchmark::RegisterBenchmark(
            (std::string(name) + "/categories:" + std::to_string(categories)).c_str(),
            [=](benchmark::State& state) { measurement(state, categories); })
            ->Unit(benchmark::kMillisecond)
            ->Iterations(iterations)
            ->UseManualTime();
    }
}

}  // namespace
}  // namespace tavo

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    tavo::registerAll("keystroke/a word and back", tavo::typeAndErase, 480);
    tavo::registerAll("keystroke/one letter and back", tavo::oneLetter, 200);
    tavo::registerAll("scroll", tavo::scroll, 1000);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
