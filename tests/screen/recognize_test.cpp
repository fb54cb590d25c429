#include "screen/recognize.h"

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {
namespace {

class ScriptedRecognizer final : public TextRecognizer {
 public:
    explicit ScriptedRecognizer(Result<ReadText> reply) : reply_(std::move(reply)) {}
    Result<ReadText> read(const PixelBuffer&) override { return reply_; }

 private:
    const Result<ReadText> reply_;
};

std::string order(const std::vector<TextRecord>& records) {
    std::string texts;
    for (const TextRecord& record : records) texts += record.text;
    return texts;
}

TEST(Recognize, RecordsComeInReadingOrder) {
    ScriptedRecognizer recognizer(ReadText{{{"e", 1, 5, 80, 9, 9},
                                            {"b", 1, 90, 10, 9, 9},
                                            {"c", 1, 90, 10, 5, 5},
                                            {"d", 1, 0, 11, 9, 9},
                                            {"a", 1, 20, 10, 9, 9}},
                                           {{1, 2, 3, 4}}});
    const auto text = readText(recognizer, pictures::plain(1, 1, pictures::kBlack)).value();
    EXPECT_EQ(order(text.records), "abcde");
    EXPECT_EQ(text.unread, (std::vector<UnreadArea>{{1, 2, 3, 4}}));
}

TEST(Recognize, AFailureIsAnErrorOrNoRecords) {
    ScriptedRecognizer recognizer(fail("no model", 500));
    const PixelBuffer image = pictures::plain(1, 1, pictures::kBlack);
    EXPECT_EQ(readText(recognizer, image).error(), (Error{"no model", 500}));
    EXPECT_TRUE(recognize(recognizer, image).empty());
}

}  // namespace
}  // namespace tandrel
