#include "reading/letter_search.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

// Three classes: 0 is "a", 1 is "b", 2 is no letter. Rows are probabilities.
FoundLetters search(const std::vector<std::array<double, 3>>& rows) {
    std::vector<float> values;
    for (const auto& row : rows) {
        for (const double p : row) values.push_back(static_cast<float>(std::log(p + 1e-9)));
    }
    return findLetters({static_cast<int>(rows.size()), 3, values}, 3, 2);
}

std::string lettersOf(const FoundLetters& found) {
    std::string text;
    for (const FoundLetter& letter : found.letters) text += letter.letter == 0 ? 'a' : 'b';
    return text;
}

TEST(LetterSearch, repeatsAreOneLetterUnlessAGapIsBetween) {
    EXPECT_EQ(lettersOf(search({{1, 0, 0}, {1, 0, 0}, {0, 1, 0}})), "ab");
    EXPECT_EQ(lettersOf(search({{1, 0, 0}, {0, 0, 1}, {1, 0, 0}})), "aa");
    EXPECT_EQ(lettersOf(search({{0, 0, 1}, {0, 0, 1}})), "");
    EXPECT_EQ(lettersOf(search({})), "");
}

// The best class of each step is "no letter", and yet "a" is more probable: 0.4 + 0.6 * 0.4 = 0.64.
TEST(LetterSearch, addsUpTheWaysToASequence) {
    const auto found = search({{0.4, 0, 0.6}, {0.4, 0, 0.6}});
    EXPECT_EQ(lettersOf(found), "a");
    EXPECT_NEAR(std::exp(found.logProbability), 0.64, 1e-3);
}

TEST(LetterSearch, saysWhereALetterIsAndHowProbable) {
    const auto found = search({{0, 0, 1}, {0, 0, 1}, {0, 0.7, 0.3}, {0, 0.9, 0.1}, {0, 0, 1}});
    ASSERT_EQ(found.letters.size(), 1U);
    EXPECT_EQ(found.letters[0].firstStep, 2);
    EXPECT_EQ(found.letters[0].step, 3);
    EXPECT_NEAR(found.letters[0].probability, 0.9, 1e-3);
}

TEST(LetterSearch, staysExactOverLongLines) {
    const std::vector<std::array<double, 3>> rows(3000, {0.5, 0.25, 0.25});
    const auto found = search(rows);
    EXPECT_TRUE(std::isfinite(found.logProbability));
    EXPECT_FALSE(found.letters.empty());
}

}  // namespace
}  // namespace tandrel
