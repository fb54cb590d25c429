#include "reading/frame_reader.h"

#include <gtest/gtest.h>

#include "reading/drawn_frame.h"
#include "reading/drawn_lines.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

// Reads every strip as the same text, each batch taking some time of a clock turned by hand.
class SlowStrips : public StripReader {
 public:
    SlowStrips(ManualClock& clock, Duration perBatch) : clock_(clock), perBatch_(perBatch) {}

    Result<std::vector<StripText>> read(std::span<const Strip> strips) override {
        clock_.advance(perBatch_);
        return std::vector<StripText>(strips.size(), {.text = "row", .confidence = 0.9});
    }

 private:
    ManualClock& clock_;
    const Duration perBatch_;
};

PixelBuffer manyRows(int rows) {
    DrawnFrame frame(1200, rows * 60, 2, kWhite);
    for (int i = 0; i < rows; ++i) {
        frame.text(10, 20 + i * 30,
                   "A row of words that fills most of its line, number " + std::to_string(i));
    }
    return frame.frame();
}

TEST(FrameReader, reportsWhatTimeDidNotSufficeForAndReadsItTheNextTime) {
    constexpr Duration kBatch = FrameReader::kTimeToRead / 4;
    ManualClock clock;
    FrameReader reader(std::make_unique<SlowStrips>(clock, kBatch), clock);
    const PixelBuffer frame = manyRows(120);
    const TimePoint start = clock.now();
    const auto read = reader.read(frame).value();
    std::size_t unread = read.unread.size();
    EXPECT_EQ(read.records.size() + unread, 120U);
    EXPECT_GT(read.records.size(), 0U);
    EXPECT_GT(unread, 0U);
    // The second of two threads may have begun a batch just before time was up.
    EXPECT_LE(clock.now() - start, FrameReader::kTimeToRead + 2 * kBatch);
    for (int again = 0; again < 10 && unread > 0; ++again) {
        const std::size_t left = reader.read(frame).value().unread.size();
        EXPECT_LT(left, unread);
        unread = left;
    }
    EXPECT_EQ(unread, 0U);
}

TEST(FrameReader, anErrorOfTheStripsIsNoEmptyScreen) {
    class Broken : public StripReader {
        Result<std::vector<StripText>> read(std::span<const Strip>) override {
            return fail("The model is gone.");
        }
    };
    ManualClock clock;
    FrameReader reader(std::make_unique<Broken>(), clock);
    EXPECT_EQ(linesOf(reader.read(manyRows(2))),
              std::vector<std::string>{"error: The model is gone."});
}

// 10,000 lines on one frame: bounded time and memory, nothing lost without a word.
TEST(FrameReader, tenThousandLines) {
    ManualClock clock;
    FrameReader reader(std::make_unique<SlowStrips>(clock, std::chrono::milliseconds(1)), clock);
    DrawnFrame frame(900, 17000, 1, kWhite);
    for (int row = 0; row < 1000; ++row) {
        for (int column = 0; column < 10; ++column) {
            frame.text(column * 90 + 4, row * 17 + 14, "word", {.points = 12});
        }
    }
    const auto read = reader.read(frame.frame()).value();
    EXPECT_EQ(read.records.size() + read.unread.size(), 10000U);
}

TEST(FrameReader, refusesWhatIsTooLargeToLookAt) {
    ManualClock clock;
    FrameReader reader(std::make_unique<SlowStrips>(clock, Duration{}), clock);
    static constexpr std::uint8_t kPixel[4] = {};
    const auto huge = PixelBuffer::adopt(32767, 32767, 0, kPixel, nullptr);
    EXPECT_EQ(
        linesOf(reader.read(huge)),
        std::vector<std::string>{"error: An image of 32767 x 32767 pixels is too large to read."});
}

}  // namespace
}  // namespace tandrel
