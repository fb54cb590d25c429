#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tandrel {

// A regular expression in ICU's syntax, searched anywhere in a text. Compiling is done once, at
// construction; a pattern that does not compile ends the program, since patterns are ours. A search
// that takes about a second, or more memory than ICU allows, finds nothing. Searching is safe from
// any number of threads at once.
class Regex {
 public:
    enum class Case { sensitive, insensitive };

    Regex(std::string_view pattern, Case letterCase);
    ~Regex();
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;

    struct Match {
        std::size_t start;  // bytes from the beginning of the text
        std::size_t end;
        std::string text;
    };

    bool has(std::string_view text) const;
    // The text of the first match.
    std::optional<std::string> first(std::string_view text) const;
    std::optional<Match> firstMatch(std::string_view text) const;
    // The text of the capture group in every match, in order; a match without that group is
    // skipped.
    std::vector<std::string> all(std::string_view text, int group = 0) const;
    // The text with every match replaced by `replacement`, taken literally.
    std::string replaceAll(std::string_view text, std::string_view replacement) const;

 private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

}  // namespace tandrel
