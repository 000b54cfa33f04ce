// The time of the text rules with the largest number of names and keywords that the launcher is
// made for. Each benchmark first checks the answer that it measures, and stops when it is wrong.
#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "support/Text.h"

namespace tavo {
namespace {

constexpr std::size_t kNames = 10'000;
constexpr std::size_t kKeywords = 2'000;

enum class Script { kLetters, kAscii, kAccented, kCyrillic, kKana };

const std::vector<std::string>& syllables(Script script) {
    static const std::vector<std::string> ascii{"pho", "to",  "Ed",  "it", "or",  "Vi",  "ew",
                                                "er",  " Ma", "na",  "ge", "r",   "Set", "ting",
                                                "s",   "Net", "wor", "k",  "Cre", "ate", "2"};
    static const std::vector<std::string> accented{"fo", "tò", "Ed",  "it", "òr", "Vì",
                                                   "sù", "ér", " Mà", "na", "gè", "r"};
    static const std::vector<std::string> cyrillic{"фо", "то", "Ре", "да", "кт", "ор",
                                                   "Пр", "ос", " М", "ен", "ед", "жер"};
    static const std::vector<std::string> kana{"フ", "ォ", "ト", "エ", "デ", "ィ", "タ", "ー"};
    static const std::vector<std::string> letters{"a", "b", "c", "d", "e", "f", "g", "h", "i",
                                                  "j", "k", "l", "m", "n", "o", "p", "q", "r",
                                                  "s", "t", "u", "v", "w", "x", "y", "z"};
    switch (script) {
        case Script::kLetters:
            return letters;
        case Script::kAccented:
            return accented;
        case Script::kCyrillic:
            return cyrillic;
        case Script::kKana:
            return kana;
        default:
            return ascii;
    }
}

std::vector<std::string> words(Script script, std::size_t count, std::size_t parts,
                               std::string_view end) {
    std::mt19937 random(static_cast<unsigned>(parts));
    const auto& from = syllables(script);
    std::vector<std::string> result;
    while (result.size() < count) {
        std::string word;
        for (std::size_t part = 0; part < parts; ++part) {
            word += from[random() % from.size()];
        }
        result.push_back(word + std::string(end));
    }
    return result;
}

std::vector<std::string> makeNames(Script script, std::size_t count) {
    return words(script, count, script == Script::kLetters ? 15 : 6, "");
}

// Keywords none of which is in a name or in another keyword.
std::vector<std::string> makeKeywords(Script script, std::size_t count) {
    return words(script, count, script == Script::kLetters ? 7 : 3, "~");
}

std::vector<std::string_view> views(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

std::string label(const std::vector<std::string>& texts) {
    std::size_t bytes = 0;
    for (const auto& text : texts) {
        bytes += text.size();
    }
    return std::to_string(texts.size()) + " texts of " +
           std::to_string(bytes / std::max<std::size_t>(texts.size(), 1)) + " bytes";
}

// A search: looks for one text in every name.
void containsInEveryName(benchmark::State& state, Script script, const std::string& needle) {
    const TextRules rules("it_IT.UTF-8");
    auto names = makeNames(script, kNames - 1);
    names.push_back("Name with the " + needle + " itself");
    const auto count = [&] {
        return std::count_if(names.begin(), names.end(),
                             [&](const std::string& name) { return rules.contains(name, needle); });
    };
    if (!rules.contains(names.back(), needle) || rules.contains(names.back(), needle + "~")) {
        state.SkipWithError("the answer is wrong");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(count());
    }
    state.SetLabel(label(names));
}
BENCHMARK_CAPTURE(containsInEveryName, ascii, Script::kAscii, "Manager")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(containsInEveryName, accented, Script::kAccented, "Manàger")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(containsInEveryName, cyrillic, Script::kCyrillic, "редактор")
    ->Unit(benchmark::kMicrosecond);

// Makes the matcher for the keywords of all categories, as a search does before it reads the names.
void buildMatcher(benchmark::State& state, Script script) {
    const TextRules rules("it_IT.UTF-8");
    const auto keywords = makeKeywords(script, kKeywords);
    const auto needles = views(keywords);
    if (!ContainmentMatcher(rules, needles).matchesAny("x" + keywords.back() + "x")) {
        state.SkipWithError("the answer is wrong");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(ContainmentMatcher(rules, needles));
    }
    state.SetLabel(label(keywords));
}
BENCHMARK_CAPTURE(buildMatcher, random_letters, Script::kLetters)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(buildMatcher, ascii, Script::kAscii)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(buildMatcher, accented, Script::kAccented)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(buildMatcher, cyrillic, Script::kCyrillic)->Unit(benchmark::kMicrosecond);

void askMatcher(benchmark::State& state, Script keywordScript, Script nameScript,
                std::size_t keywordCount) {
    const TextRules rules("it_IT.UTF-8");
    const auto keywords = makeKeywords(keywordScript, keywordCount);
    const auto names = makeNames(nameScript, kNames);
    const ContainmentMatcher matcher(rules, views(keywords));
    const auto count = [&] {
        return std::count_if(names.begin(), names.end(),
                             [&](const std::string& name) { return matcher.matchesAny(name); });
    };
    if (count() != 0 || !matcher.matchesAny(names.front() + keywords.back())) {
        state.SkipWithError("the answer is wrong");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(count());
    }
    state.SetLabel(label(names));
}
BENCHMARK_CAPTURE(askMatcher, random_letters, Script::kLetters, Script::kLetters, kKeywords)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(askMatcher, ascii, Script::kAscii, Script::kAscii, kKeywords)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(askMatcher, ascii_one_keyword, Script::kAscii, Script::kAscii, 1)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(askMatcher, accented, Script::kAccented, Script::kAccented, kKeywords)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(askMatcher, cyrillic, Script::kCyrillic, Script::kCyrillic, kKeywords)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(askMatcher, kana, Script::kKana, Script::kKana, kKeywords)
    ->Unit(benchmark::kMicrosecond);

void makeRules(benchmark::State& state) {
    if (TextRules("tr_TR.UTF-8").contains("I", "i")) {
        state.SkipWithError("the answer is wrong");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(TextRules("it_IT.UTF-8"));
    }
}
BENCHMARK(makeRules)->Unit(benchmark::kMicrosecond);

// What the start of the program does: makes the text rules of the user's locale and sorts all names
// by them.
void sortNames(benchmark::State& state, Script script) {
    const auto names = makeNames(script, static_cast<std::size_t>(state.range(0)));
    const auto texts = views(names);
    const TextRules rules("it_IT.UTF-8");
    const auto order = rules.sortedOrder(texts);
    const bool sorted =
        order.size() == names.size() &&
        std::is_sorted(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            return rules.compare(texts[a], texts[b]) < 0;
        });
    if (!sorted) {
        state.SkipWithError("the answer is wrong");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(TextRules("it_IT.UTF-8").sortedOrder(texts));
    }
    state.SetLabel(label(names));
}
BENCHMARK_CAPTURE(sortNames, ascii, Script::kAscii)
    ->Arg(200)
    ->Arg(5'000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(sortNames, accented, Script::kAccented)
    ->Arg(200)
    ->Arg(5'000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tavo
