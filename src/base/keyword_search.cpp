#include "base/keyword_search.h"

#include "base/ascii.h"

namespace tandrel {
KeywordSearch::KeywordSearch(std::span<const Keyword> keywords) {
    for (const auto& keyword : keywords) {
        for (const char c : keyword.text) {
            auto& letter = letterOf_[static_cast<std::uint8_t>(asciiLower(c))];
            if (letter == 0) letter = static_cast<std::uint8_t>(letters_++);
        }
    }
    for (char capital = 'A'; capital <= 'Z'; ++capital) {
        letterOf_[static_cast<std::uint8_t>(capital)] =
            letterOf_[static_cast<std::uint8_t>(asciiLower(capital))];
    }
    nodes_.emplace_back();
    steps_.resize(letters_);
    for (const auto& keyword : keywords) add(keyword);
    completeSteps();
}

void KeywordSearch::add(const Keyword& keyword) {
    std::uint32_t at = 0;
    for (const char c : keyword.text) {
        const std::uint8_t letter = letterOf_[static_cast<std::uint8_t>(c)];
        if (step(at, letter) == 0) {
            const auto made = static_cast<std::uint32_t>(nodes_.size());
            nodes_.emplace_back();
            steps_.resize(steps_.size() + letters_);
            step(at, letter) = made;
        }
        at = step(at, letter);
    }
    nodes_[at].marks |= keyword.marks;
}

// Level by level: where a letter leads nowhere, it leads where it would have from the longest end
// of what was read that begins a keyword.
void KeywordSearch::completeSteps() {
    std::vector<std::uint32_t> queue = {0};
    for (std::size_t i = 0; i < queue.size(); ++i) {
        const std::uint32_t at = queue[i];
        const std::uint32_t fallback = nodes_[at].fallback;
        nodes_[at].marks |= nodes_[fallback].marks;
        for (std::uint32_t letter = 0; letter < letters_; ++letter) {
            std::uint32_t& next = step(at, static_cast<std::uint8_t>(letter));
            const std::uint32_t shorter =
                at == 0 ? 0 : step(fallback, static_cast<std::uint8_t>(letter));
            if (next == 0) {
                next = shorter;
            } else {
                nodes_[next].fallback = shorter;
                queue.push_back(next);
            }
        }
    }
}

std::uint64_t KeywordSearch::marksOf(std::string_view text) const {
    std::uint64_t marks = 0;
    std::uint32_t at = 0;
    for (const char c : text) {
        at = steps_[at * letters_ + letterOf_[static_cast<std::uint8_t>(c)]];
        marks |= nodes_[at].marks;
    }
    return marks;
}

std::optional<KeywordSearch::Span> KeywordSearch::find(std::string_view text,
                                                       std::uint64_t marks) const {
    std::optional<Span> found;
    std::uint32_t at = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        at = steps_[at * letters_ + letterOf_[static_cast<std::uint8_t>(text[i])]];
        if (!(nodes_[at].marks & marks)) continue;
        if (!found) found = Span{i + 1, i + 1};
        found->lastEnd = i + 1;
    }
    return found;
}

}  // namespace tandrel
