#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tandrel {

// Finds which of many keywords stand anywhere in a text, in one pass over its bytes (Aho and
// Corasick). ASCII letters match in either case. Immutable once made; any thread.
class KeywordSearch {
 public:
    struct Keyword {
        std::string_view text;  // not empty
        std::uint64_t marks;    // what a text that holds it is marked with
    };

    explicit KeywordSearch(std::span<const Keyword> keywords);

    // The marks of all keywords in the text, together.
    std::uint64_t marksOf(std::string_view text) const;

    struct Span {
        std::size_t firstEnd;  // bytes from the beginning of the text
        std::size_t lastEnd;
    };
    // Where the first and the last keyword with one of these marks end.
    std::optional<Span> find(std::string_view text, std::uint64_t marks) const;

 private:
    struct Node {
        std::uint64_t marks = 0;  // of every keyword that ends here
        std::uint32_t fallback = 0;
    };
    void add(const Keyword& keyword);
    void completeSteps();
    std::uint32_t& step(std::uint32_t node, std::uint8_t letter) {
        return steps_[node * letters_ + letter];
    }

    // Bytes that no keyword holds are all the same letter, 0.
    std::array<std::uint8_t, 256> letterOf_ = {};
    std::uint32_t letters_ = 1;
    std::vector<Node> nodes_;
    std::vector<std::uint32_t> steps_;  // nodes x letters
};

}  // namespace tandrel
