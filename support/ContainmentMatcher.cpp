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
// neighbours, and those of the next node follow them.
class Automaton {
public:
    using Node = std::uint32_t;
    static constexpr Node kRoot = 0;

    // Sorted, none empty, none twice.
    explicit Automaton(const std::vector<std::string_view>& patterns) {
        growTree(patterns);
        for (Node child = nodes_[kRoot].firstChild; child < nodes_[kRoot + 1].firstChild; ++child) {
            rootChild_[labels_[child]] = child;
        }
        linkFailures();
    }

    [[nodiscard]] Node next(Node node, unsigned char byte) const {
        while (node != kRoot) {
            if (const Node child = childOf(node, byte); child != kRoot) {
                return child;
            }
            node = nodes_[node].failure;
        }
        return rootChild_[byte];
    }

    // The longest pattern that ends at a node, given as its own last node, or the root for none;
    // and the next shorter one.
    [[nodiscard]] Node longestMatch(Node node) const { return nodes_[node].match; }
    [[nodiscard]] Node shorterMatch(Node match) const {
        return nodes_[nodes_[match].failure].match;
    }
    [[nodiscard]] std::size_t length(Node match) const { return nodes_[match].depth; }

private:
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

    [[nodiscard]] Node childOf(Node node, unsigned char byte) const {
        for (Node child = nodes_[node].firstChild; child < nodes_[node + 1].firstChild; ++child) {
            if (labels_[child] == byte) {
                return child;
            }
        }
        return kRoot;
    }

    void growTree(const std::vector<std::string_view>& patterns) {
        labels_.push_back(0);
        nodes_.push_back({0, kRoot, kRoot, 0});
        std::vector<Range> ranges{{0, patterns.size()}};
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
                labels_.push_back(static_cast<unsigned char>(label));
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
        for (Node node = 1; node < labels_.size(); ++node) {
            Links& links = nodes_[node];
            const Node parent = links.failure;
            links.failure = parent == kRoot ? kRoot : next(nodes_[parent].failure, labels_[node]);
            if (links.match == kRoot) {
                links.match = nodes_[links.failure].match;
            }
        }
    }

    std::vector<Links> nodes_;
    std::vector<unsigned char> labels_;  // what leads to each node
    std::array<Node, 256> rootChild_{};
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
                if (candidate.beginsWithMovableMark()) {
                    beginningWithMark.push_back(std::move(candidate));
                }
            }
        }
    }

    [[nodiscard]] bool matchesAnyIn(const FoldedText& text) const {
        Automaton::Node node = Automaton::kRoot;
        for (std::size_t end = 1; end <= text.units.size(); ++end) {
            node = automaton.next(node, static_cast<unsigned char>(text.units[end - 1]));
            for (auto match = automaton.longestMatch(node); match != Automaton::kRoot;
                 match = automaton.shorterMatch(match)) {
                if (text.matches(end - automaton.length(match), end)) {
                    return true;
                }
            }
        }
        return std::any_of(
            beginningWithMark.begin(), beginningWithMark.end(),
            [&](const FoldedText& needle) { return standsAmongMarks(text, needle, casing); });
    }

    Casing casing;
    Automaton automaton;
    std::vector<FoldedText> beginningWithMark;
};

ContainmentMatcher::ContainmentMatcher(const TextRules& rules,
                                       std::span<const std::string_view> needles)
    : state_(std::make_unique<State>(rules.tables_->casing, needles)) {}

ContainmentMatcher::~ContainmentMatcher() = default;
ContainmentMatcher::ContainmentMatcher(ContainmentMatcher&&) noexcept = default;
ContainmentMatcher& ContainmentMatcher::operator=(ContainmentMatcher&&) noexcept = default;

bool ContainmentMatcher::matchesAny(std::string_view text) const {
    const Automaton& automaton = state_->automaton;
    const bool turkic = state_->casing == Casing::kTurkic;
    Automaton::Node node = Automaton::kRoot;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (static_cast<unsigned char>(character) >= 0x80) {
            return state_->matchesAnyIn(folded(text, state_->casing));
        }
        if (turkic && character == 'I') {
            constexpr std::string_view kDotlessI = "\u0131";
            node = automaton.next(node, static_cast<unsigned char>(kDotlessI[0]));
            node = automaton.next(node, static_cast<unsigned char>(kDotlessI[1]));
        } else {
            node = automaton.next(
                node, static_cast<unsigned char>(foldedAscii(character, Casing::kGeneral)));
        }
        if (automaton.longestMatch(node) != Automaton::kRoot) {
            // What follows may be a mark, which would make the last letter another one.
            const bool isWhole =
                i + 1 == text.size() || static_cast<unsigned char>(text[i + 1]) < 0x80;
            return isWhole || state_->matchesAnyIn(folded(text, state_->casing));
        }
    }
    return false;
}

}  // namespace tavo
