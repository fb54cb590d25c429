#include <algorithm>
#include <thread>

#include <gtest/gtest.h>

#include "platform/linux/linux_text_recognizer.h"
#include "reading/drawn_frame.h"

namespace tandrel {
namespace {

std::vector<std::string> linesOf(const Result<ReadText>& read) {
    std::vector<std::string> lines;
    if (!read) return {"error: " + read.error().message};
    for (const TextRecord& record : read->records) lines.push_back(record.text);
    std::sort(lines.begin(), lines.end());
    return lines;
}

// A settings row, a coloured button and two columns at three pixels a point.
PixelBuffer shopFrame() {
    DrawnFrame frame(1179, 900, 3, kWhite);
    frame.text(20, 50, "Delivery address", {.font = "Inter Bold", .points = 22});
    frame.text(20, 90, "Total");
    frame.text(300, 90, "€12.50");
    frame.rectangle(20, 120, 350, 50, 12, {0.2, 0.7, 0.3});
    frame.text(150, 151, "Pay €12.50", {.font = "Inter Semi-Bold", .colour = kWhite});
    frame.text(20, 220, "Free returns within 30 days", {.points = 13, .colour = {0.5, 0.5, 0.5}});
    return frame.frame();
}

TEST(TextRecognizer, readsLinesOfAShop) {
    const auto recognizer = *makeTextRecognizer();
    const auto read = recognizer->read(shopFrame());
    const std::vector<std::string> expected = {"Delivery address", "Free returns within 30 days",
                                               "Pay €12.50", "Total", "€12.50"};
    EXPECT_EQ(linesOf(read), expected);
}

TEST(TextRecognizer, boxIsTheInkInImagePixels) {
    DrawnFrame frame(1179, 300, 3, kWhite);
    frame.text(100, 50, "Wallet", {.points = 20});
    const auto read = (*makeTextRecognizer())->read(frame.frame());
    ASSERT_TRUE(read);
    ASSERT_EQ(read->records.size(), 1U);
    const TextRecord& record = read->records[0];
    EXPECT_NEAR(record.x, 300, 3);
    EXPECT_NEAR(record.y + record.height, 150, 3);
    EXPECT_NEAR(record.height, 45, 6);
    EXPECT_GT(record.confidence, 0.8);
}

TEST(TextRecognizer, saysWhatToInstallWhenTheFileIsMissing) {
    const auto recognizer = *makeTextRecognizerWith({.folder = "/nonexistent"});
    const auto read = recognizer->read(shopFrame());
    ASSERT_FALSE(read);
    EXPECT_NE(read.error().message.find("install tesseract-ocr-eng"), std::string::npos)
        << read.error().message;
}

TEST(TextRecognizer, blankFramesHaveNoText) {
    const auto recognizer = *makeTextRecognizer();
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 2}, {20000, 10}, {1179, 2556}}) {
        DrawnFrame frame(width, height, 1, {0.3, 0.3, 0.3});
        EXPECT_EQ(linesOf(recognizer->read(frame.frame())), std::vector<std::string>{});
    }
}

TEST(TextRecognizer, readsFromEightThreadsAtOnce) {
    const auto recognizer = *makeTextRecognizer();
    const PixelBuffer frame = shopFrame();
    const auto expected = linesOf(recognizer->read(frame));
    std::vector<std::vector<std::string>> lines(8);
    {
        std::vector<std::jthread> threads;
        for (auto& result : lines) {
            threads.emplace_back([&] { result = linesOf(recognizer->read(frame)); });
        }
    }
    for (const auto& result : lines) EXPECT_EQ(result, expected);
}

}  // namespace
}  // namespace tandrel
