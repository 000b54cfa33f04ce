#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "support/Text.h"
#include "support/TextFolding.h"
#include "support/TextTables.h"
#include "support/Utf8.h"

namespace tavo {
namespace {

// Finds all places of many patterns in one pass over a text (Aho and Corasick), byte by byte.
//
// The patterns are a tree whose nodes are numbered level by level: the children of a node are
// neighbours, those of the next node follow them, and the nodes that texts pass most often come
// first.
class Automaton {
public:
    using Node = std::uint32_t;
    // A byte that occurs in a pattern, numbered in the order of its discovery; 0 for all others.
    using Symbol = std::uint8_t;
    static constexpr Node kRoot = 0;

    // Sorted, none empty, none twice, all UTF-8 (which leaves bytes that no pattern has).
    explicit Automaton(const std::vector<std::string_view>& patterns) {
        numberSymbols(patterns);
        growTree(patterns);
        linkFailures();
    }

    [[nodiscard]] Symbol symbol(char byte) const {
        return symbols_[static_cast<unsigned char>(byte)];
    }

    [[nodiscard]] Node next(Node node, Symbol symbol) const {
        while (node >= rowCount_) {
            if (const Node child = childOf(node, symbol); child != kRoot) {
                return child;
            }
            node = nodes_[node].failure;
        }
        return rows_[node * symbolCount_ + symbol];
    }

    // The longest pattern that ends at a node, given as its own last node, or the root for none;
    // and the next shorter one.
    [[nodiscard]] Node longestMatch(Node node) const { return nodes_[node].match; }
    [[nodiscard]] Node shorterMatch(Node match) const {
        return nodes_[nodes_[match].failure].match;
    }
    [[nodiscard]] std::size_t length(Node match) const { return nodes_[match].depth; }

private:
    // So many nodes have a row of their own that says where each symbol leads. For all of them it
    // would be more memory than a search can fill in time.
    static constexpr std::size_t kRows = 4096;

    struct Links {
        Node firstChild;
        Node failure;  // the node of the longest proper end of this node's text
        Node match;
        std::uint32_t depth;
    };

    // The patterns that pass through a node.
    struct Range {
        std::size_t begin;
        std::size_t end;
    };

    [[nodiscard]] Node childOf(Node node, Symbol symbol) const {
        for (Node child = nodes_[node].firstChild; child < nodes_[node + 1].firstChild; ++child) {
            if (labels_[child] == symbol) {
                return child;
            }
        }
        return kRoot;
    }

    void numberSymbols(const std::vector<std::string_view>& patterns) {
        std::size_t bytes = 0;
        for (const std::string_view pattern : patterns) {
            bytes += pattern.size();
            for (const char byte : pattern) {
                Symbol& number = symbols_[static_cast<unsigned char>(byte)];
                if (number == 0) {
                    number = static_cast<Symbol>(symbolCount_++);
                }
            }
        }
        labels_.reserve(bytes + 1);
        nodes_.reserve(bytes + 2);
    }

    void growTree(const std::vector<std::string_view>& patterns) {
        labels_.push_back(0);
        nodes_.push_back({0, kRoot, kRoot, 0});
        std::vector<Range> ranges{{0, patterns.size()}};
        ranges.reserve(labels_.capacity());
        for (Node node = 0; node < labels_.size(); ++node) {
            nodes_[node].firstChild = static_cast<Node>(labels_.size());
            const std::uint32_t depth = nodes_[node].depth;
            auto [begin, end] = ranges[node];
            if (begin < end && patterns[begin].size() == depth) {
                nodes_[node].match = node;
                ++begin;
            }
            while (begin < end) {
                const char label = patterns[begin][depth];
                std::size_t same = begin + 1;
                while (same < end && patterns[same][depth] == label) {
                    ++same;
                }
                labels_.push_back(symbol(label));
                // Until the failures are linked, the place for them keeps the parent.
                nodes_.push_back({0, node, kRoot, depth + 1});
                ranges.push_back({begin, same});
                begin = same;
            }
        }
        // Behind the last node, where its children end.
        nodes_.push_back({static_cast<Node>(labels_.size()), kRoot, kRoot, 0});
    }

    void linkFailures() {
        const std::size_t rows = std::min(labels_.size(), kRows);
        rows_.assign(rows * symbolCount_, kRoot);
        for (Node node = 0; node < labels_.size(); ++node) {
            Links& links = nodes_[node];
            if (links.depth > 0) {
                const Node parent = links.failure;
                links.failure =
                    parent == kRoot ? kRoot : next(nodes_[parent].failure, labels_[node]);
                if (links.match == kRoot) {
                    links.match = nodes_[links.failure].match;
                }
            }
            if (node < rows) {
                addRow(node);
            }
        }
    }

    void addRow(Node node) {
        const auto row = rows_.begin() + static_cast<std::ptrdiff_t>(node * symbolCount_);
        const auto failureRow =
            rows_.begin() + static_cast<std::ptrdiff_t>(nodes_[node].failure * symbolCount_);
        if (node != kRoot) {
            std::copy_n(failureRow, symbolCount_, row);
        }
        for (Node child = nodes_[node].firstChild; child < nodes_[node + 1].firstChild; ++child) {
            row[labels_[child]] = child;
        }
        rowCount_ = node + 1;
    }

    std::array<Symbol, 256> symbols_{};
    std::size_t symbolCount_ = 1;
    std::vector<Links> nodes_;
    std::vector<Symbol> labels_;  // what leads to each node
    std::vector<Node> rows_;
    std::size_t rowCount_ = 0;
};

// The needles folded, sorted, each once; `storage` is what they are views of.
std::vector<std::string_view> patternsOf(std::span<const std::string_view> needles, Casing casing,
                                         std::string& storage) {
    std::vector<std::size_t> ends;
    ends.reserve(needles.size());
    for (const std::string_view needle : needles) {
        const bool plain = isAscii(needle) && casing == Casing::kGeneral;
        if (plain) {
            for (const char character : needle) {
                storage += foldedAscii(character, casing);
            }
        } else {
            storage += folded(needle, casing).units;
        }
        ends.push_back(storage.size());
    }
    std::vector<std::string_view> patterns;
    patterns.reserve(needles.size());
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
        if (end > begin) {
            patterns.push_back(std::string_view(storage).substr(begin, end - begin));
        }
        begin = end;
    }
    std::sort(patterns.begin(), patterns.end());
    patterns.erase(std::unique(patterns.begin(), patterns.end()), patterns.end());
    return patterns;
}

}  // namespace

struct ContainmentMatcher::State {
    State(Casing textCasing, std::span<const std::string_view> needles, std::string storage = {})
        : casing(textCasing), automaton(patternsOf(needles, casing, storage)) {
        for (const std::string_view needle : needles) {
            if (!isAscii(needle)) {
                auto candidate = folded(needle, casing);
                if (candidate.leadLength() > 0) {
                    candidate.markRuns.clear();
                    beginningWithMark.push_back(std::move(candidate));
                }
            }
        }
        for (std::size_t i = 0; i < asciiSymbols.size(); ++i) {
            asciiSymbols[i] = automaton.symbol(foldedAscii(static_cast<char>(i), Casing::kGeneral));
        }
    }

    // After an ASCII character.
    [[nodiscard]] Automaton::Node next(Automaton::Node node, char character) const {
        if (character == 'I' && casing == Casing::kTurkic) {
            constexpr std::string_view kDotlessI = "\u0131";
            node = automaton.next(node, automaton.symbol(kDotlessI[0]));
            return automaton.next(node, automaton.symbol(kDotlessI[1]));
        }
        return automaton.next(node, asciiSymbols[static_cast<unsigned char>(character)]);
    }

    [[nodiscard]] bool matchesAnyIn(const FoldedText& text) const {
        Automaton::Node node = Automaton::kRoot;
        for (std::size_t end = 1; end <= text.units.size(); ++end) {
            node = automaton.next(node, automaton.symbol(text.units[end - 1]));
            for (auto match = automaton.longestMatch(node); match != Automaton::kRoot;
                 match = automaton.shorterMatch(match)) {
                if (text.matches(end - automaton.length(match), end)) {
                    return true;
                }
            }
        }
        return !text.markRuns.empty() &&
               std::any_of(beginningWithMark.begin(), beginningWithMark.end(),
                           [&](const FoldedText& needle) {
                               return standsAmongMarks(text, needle, casing);
                           });
    }

    Casing casing;
    Automaton automaton;
    std::array<Automaton::Symbol, 128> asciiSymbols{};
    std::vector<FoldedText> beginningWithMark;  // their units alone
};

ContainmentMatcher::ContainmentMatcher(const TextRules& rules,
                                       std::span<const std::string_view> needles)
    : state_(std::make_unique<State>(rules.tables_->casing, needles)) {}

ContainmentMatcher::~ContainmentMatcher() = default;
ContainmentMatcher::ContainmentMatcher(ContainmentMatcher&&) noexcept = default;
ContainmentMatcher& ContainmentMatcher::operator=(ContainmentMatcher&&) noexcept = default;

bool ContainmentMatcher::matchesAny(std::string_view text) const {
    const State& state = *state_;
    const auto isPlain = [](char character) {
        return static_cast<unsigned char>(character) < 0x80;
    };
    Automaton::Node node = Automaton::kRoot;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isPlain(text[i])) {
            return state.matchesAnyIn(folded(text, state.casing));
        }
        node = state.next(node, text[i]);
        if (state.automaton.longestMatch(node) != Automaton::kRoot) {
            // What follows may be a mark, which would make the last letter another one.
            return i + 1 == text.size() || isPlain(text[i + 1]) ||
                   state.matchesAnyIn(folded(text, state.casing));
        }
    }
    return false;
}

}  // namespace tavo
