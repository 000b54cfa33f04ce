// The time of filtered(), which each keystroke calls, with many applications and 200 categories of
// 10 keywords.
#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/ApplicationNames.h"
#include <benchmark/benchmark.h>

#include "catalogue/CategoryRule.h"
#include "catalogue/SearchQuery.h"
#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

constexpr int kCategoryCount = 200;
constexpr int kKeywordCount = 10;

std::string keywordOf(int category, int number) {
    return "keyword" + std::to_string(category * kKeywordCount + number);
}

// A model with `count` applications. The last keyword of each category matches a few of them.
ModelHarness& harnessOf(int count) {
    static std::map<int, std::unique_ptr<ModelHarness>> harnesses;
    std::unique_ptr<ModelHarness>& harness = harnesses[count];
    if (!harness) {
        harness = std::make_unique<ModelHarness>("it_IT");
        std::vector<std::string> names;
        for (int i = 0; i < count; ++i) {
            names.push_back(applicationName(i));
        }
        harness->install(names);
        std::vector<LauncherCategory> categories;
        StringDictionary rules;
        json::StringArrayDictionary assignments;
        for (int c = 0; c < kCategoryCount; ++c) {
            const std::string id = "id" + std::to_string(c);
            categories.emplace_back(id, "Gruppo " + std::to_string(c));
            std::string rule = "zz" + std::to_string(c);
            for (int k = 1; k < kKeywordCount; ++k) {
                rule += ", " + keywordOf(c, k);
            }
            rules[id] = rule;
            assignments[id] = {ModelHarness::pathOf(applicationName(c % count))};
        }
        harness->store(categories);
        harness->storeRules(rules);
        harness->defaults.holdValue(kAssignmentsKey, Data{*json::write(assignments)});
    }
    Favorites::shared().use(harness->defaults);
    return *harness;
}

struct Question {
    const char* query;
    const char* category;
};

// Answers as filtered() does, but in the plain way: one application and one keyword at a time. To
// compare the times.
std::size_t answerSlowly(ModelHarness& harness, const Question& question) {
    const TextRules text("it_IT");
    LauncherModel& model = harness.model();
    const SearchQuery search = parseQuery(question.query);
    const auto belongs = [&](const AppItem& app, const LauncherCategory& category) {
        const std::string rule = model.ruleText(category);
        const auto keywords = keywordsOf(rule);
        return model.isAssigned(app, category) ||
               std::any_of(keywords.begin(), keywords.end(),
                           [&](const auto& keyword) { return text.contains(app.name, keyword); });
    };
    const auto& categories = model.customCategories();
    return static_cast<std::size_t>(
        std::count_if(model.apps().begin(), model.apps().end(), [&](const AppItem& app) {
            return (question.category == kAllID ||
                    std::any_of(categories.begin(), categories.end(),
                                [&](const LauncherCategory& category) {
                                    return category.id == question.category &&
                                           belongs(app, category);
                                })) &&
                   (search.text.empty() || text.contains(app.name, search.text)) &&
                   (search.category.empty() ||
                    std::any_of(categories.begin(), categories.end(),
                                [&](const LauncherCategory& category) {
                                    return text.contains(category.name, search.category) &&
                                           belongs(app, category);
                                }));
        }));
}

void answer(benchmark::State& state, const Question& question) {
    ModelHarness& harness = harnessOf(static_cast<int>(state.range(0)));
    LauncherModel& model = harness.model();
    model.setQuery(question.query);
    model.setSelectedCategoryID(question.category);
    std::size_t shown = model.filtered().size();
    constexpr int kChecked = 1'000;
    if (state.range(0) == kChecked && shown != answerSlowly(harness, question)) {
        state.SkipWithError("filtered() gives another number than the slow way");
    }
    for (auto _ : state) {
        shown = model.filtered().size();
        benchmark::DoNotOptimize(shown);
    }
    state.counters["shown"] = static_cast<double>(shown);
    state.SetComplexityN(state.range(0));
}

void register_(const char* name, const Question& question) {
    benchmark::RegisterBenchmark(name,
                                 [question](benchmark::State& state) { answer(state, question); })
        ->Arg(1'000)
        ->Arg(10'000)
        ->Arg(100'000)
        ->Unit(benchmark::kMillisecond)
        ->Complexity(benchmark::oN);
}

}  // namespace
}  // namespace tavo

int main(int argc, char** argv) {
    using tavo::register_;
    register_("filtered/everything", {"", "all"});
    register_("filtered/one letter", {"e", "all"});
    register_("filtered/a word", {"manager", "all"});
    register_("filtered/accented", {"caffè", "all"});
    register_("filtered/nothing matches", {"qqqq", "all"});
    register_("filtered/all categories", {"cat:gruppo", "all"});
    register_("filtered/all categories and text", {"cat:gruppo e", "all"});
    register_("filtered/one category", {"", "id7"});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
