#include <algorithm>
#include <functional>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "platform/linux/linux_text_recognizer.h"
#include "reading/drawn_frame.h"
#include "reading/drawn_lines.h"

namespace tandrel {
namespace {

using Lines = std::vector<std::string>;

constexpr Colour kPlainGrey{0.56, 0.56, 0.58};
constexpr Colour kBlue{0, 0.48, 1};
constexpr Colour kGreen{0.2, 0.72, 0.3};

// On paper of a colour, and what is read of it, sorted.
const std::tuple<const char*, Colour, std::function<void(DrawnFrame&)>, Lines> kDrawings[] = {
    {"amounts keep every digit and separator",
     kWhite,
     [](DrawnFrame& frame) {
         frame.text(20, 60, "€1,174.20");
         frame.text(20, 110, "-$18.11");
         frame.text(20, 160, "£7.95");
     },
     {"-$18.11", "£7.95", "€1,174.20"}},
    {"white on a filled button",
     kWhite,
     [](DrawnFrame& frame) {
         frame.rectangle(20, 50, 350, 50, 12, kGreen);
         frame.text(150, 81, "Pay €12.50", {"Inter Semi-Bold", 17, kWhite});
     },
     {"Pay €12.50"}},
    {"an outlined button and a pill",
     kWhite,
     [](DrawnFrame& frame) {
         frame.outline(20, 50, 160, 44, 10, kBlue);
         frame.text(58, 78, "Continue", {"Inter", 17, kBlue});
         frame.rectangle(210, 56, 90, 32, 16, kBlue);
         frame.text(230, 78, "Redeem", {"Inter Semi-Bold", 14, kWhite});
     },
     {"Continue", "Redeem"}},
    {"grey on grey",
     {0.95, 0.95, 0.97},
     [](DrawnFrame& frame) {
         frame.rectangle(20, 40, 350, 44, 10, {0.89, 0.89, 0.91});
         frame.text(36, 67, "Expiry date", {"Inter", 16, kPlainGrey});
     },
     {"Expiry date"}},
    {"columns are lines of their own",
     kWhite,
     [](DrawnFrame& frame) {
         frame.text(20, 60, "Rent");
         frame.text(180, 60, "434,073");
         frame.text(290, 60, "12.5 %");
     },
     {"12.5 %", "434,073", "Rent"}},
    {"single digits of a keypad",
     kBlack,
     [](DrawnFrame& frame) {
         const DrawnStyle key{"Inter", 28, kWhite};
         for (const int digit : {1, 2, 3, 4, 7}) {
             frame.text(digit * 50, 70, std::to_string(digit), key);
         }
     },
     {"1", "2", "3", "4", "7"}},
    {"large bold type",
     kWhite,
     [](DrawnFrame& frame) { frame.text(20, 90, "Due Today", {"Inter Bold", 56, kBlack}); },
     {"Due Today"}},
    {"a badge in its plate",
     kBlack,
     [](DrawnFrame& frame) {
         frame.rectangle(300, 60, 42, 22, 8, kWhite);
         frame.text(310, 76, "90", {"Inter Bold", 14, kBlack});
     },
     {"90"}},
};

TEST(TextRecognizer, readsDrawnTextExactly) {
    for (const auto& [name, paper, draw, expected] : kDrawings) {
        DrawnFrame frame(1179, 600, 3, paper);
        draw(frame);
        EXPECT_EQ(linesOf((*makeTextRecognizer())->read(frame.frame())), expected) << name;
    }
}

TEST(TextRecognizer, readsTheSameInEveryFontAndDensity) {
    const auto recognizer = *makeTextRecognizer();
    for (const int density : {2, 3}) {
        for (const char* font : {"Inter", "Inter Bold", "Inter Light"}) {
            DrawnFrame frame(390 * density, 100 * density, density, kWhite);
            frame.text(20, 60, "Transfer to savings", {font, 17, kBlack});
            EXPECT_EQ(linesOf(recognizer->read(frame.frame())), Lines{"Transfer to savings"})
                << font << " at " << density;
        }
    }
}

// Whatever hides the rest of an amount: what is left reads like another one.
TEST(TextRecognizer, anAmountThatMayGoOnIsNotSure) {
    const std::tuple<const char*, bool, std::function<void(DrawnFrame&)>> rows[] = {
        {"stands free", true, [](DrawnFrame& frame) { frame.text(20, 60, "Total $48.50"); }},
        {"runs out of the frame", false,
         [](DrawnFrame& frame) { frame.text(295, 60, "Total $48.50"); }},
        {"goes on under a plate", false,
         [](DrawnFrame& frame) {
             frame.text(20, 60, "Total $48.50");
             frame.rectangle(111, 36, 80, 34, 6, kBlue);
         }},
    };
    for (const auto& [name, isSure, draw] : rows) {
        DrawnFrame drawn(390 * 2, 100 * 2, 2, kWhite);
        draw(drawn);
        const auto records = (*makeTextRecognizer())->read(drawn.frame()).value().records;
        const auto total = std::ranges::find_if(
            records, [](const TextRecord& record) { return record.text.starts_with("Total"); });
        ASSERT_NE(total, records.end()) << name;
        EXPECT_EQ(total->confidence > 0.5, isSure) << name << ": " << total->text;
    }
}

TEST(TextRecognizer, boxIsTheInkInImagePixels) {
    DrawnFrame frame(1179, 300, 3, kWhite);
    frame.text(100, 50, "Wallet", {.points = 20});
    const auto read = (*makeTextRecognizer())->read(frame.frame()).value();
    ASSERT_EQ(read.records.size(), 1U);
    const TextRecord& record = read.records[0];
    EXPECT_NEAR(record.x, 300, 3);
    EXPECT_NEAR(record.y + record.height, 150, 3);
    EXPECT_NEAR(record.height, 45, 6);
    EXPECT_GT(record.confidence, 0.8);
}

TEST(TextRecognizer, seesWhatChangedAndForgetsWhatIsGone) {
    const auto recognizer = *makeTextRecognizer();
    auto frameOf = [](const char* amount) {
        DrawnFrame frame(1179, 300, 3, kWhite);
        frame.text(20, 50, "Total");
        frame.text(250, 50, amount);
        return frame.frame();
    };
    EXPECT_EQ(linesOf(recognizer->read(frameOf("€3.50"))), (Lines{"Total", "€3.50"}));
    EXPECT_EQ(linesOf(recognizer->read(frameOf("€8.50"))), (Lines{"Total", "€8.50"}));
    EXPECT_EQ(linesOf(recognizer->read(frameOf("€3.50"))), (Lines{"Total", "€3.50"}));
    EXPECT_EQ(linesOf(recognizer->read(frameOf(""))), Lines{"Total"});
}

TEST(TextRecognizer, saysWhatToInstallWhenTheFileIsMissing) {
    DrawnFrame frame(600, 200, 2, kWhite);
    frame.text(20, 50, "Total");
    const auto recognizer = *makeTextRecognizerWith({.folder = "/nonexistent"});
    const auto read = recognizer->read(frame.frame());
    ASSERT_FALSE(read);
    EXPECT_NE(read.error().message.find("apt install tesseract-ocr-eng"), std::string::npos)
        << read.error().message;
}

PixelBuffer pattern(int width, int height, const std::function<std::uint8_t(int, int)>& level) {
    return PixelBuffer::make(width, height, [&](std::uint8_t* pixels, int rowBytes) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < 4 * width; ++x) {
                pixels[std::ptrdiff_t{y} * rowBytes + x] = level(x / 4, y);
            }
        }
    });
}

TEST(TextRecognizer, oddFramesHaveNoText) {
    const auto recognizer = *makeTextRecognizer();
    auto flat = [](int, int) { return std::uint8_t{77}; };
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 2}, {20000, 10}, {10, 20000}}) {
        EXPECT_EQ(linesOf(recognizer->read(pattern(width, height, flat))), Lines{});
    }
    for (const int cell : {1, 2, 3, 7}) {
        const auto board = pattern(800, 800, [&](int x, int y) {
            return static_cast<std::uint8_t>((x / cell + y / cell) % 2 * 255);
        });
        EXPECT_EQ(linesOf(recognizer->read(board)), Lines{}) << cell;
    }
    std::mt19937 random(1);
    const auto noise =
        pattern(800, 800, [&](int, int) { return static_cast<std::uint8_t>(random()); });
    EXPECT_EQ(linesOf(recognizer->read(noise)), Lines{});
    EXPECT_FALSE(recognizer->read(PixelBuffer()));
}

TEST(TextRecognizer, readsFromEightThreadsAtOnce) {
    const auto recognizer = *makeTextRecognizer();
    std::vector<PixelBuffer> frames;
    std::vector<Lines> expected, lines(8);
    for (int i = 0; i < 8; ++i) {
        DrawnFrame frame(800, 300, 2, kWhite);
        frame.text(20, 50, "Balance");
        frame.text(20, 100, "Page " + std::to_string(i + 2));
        frames.push_back(frame.frame());
        expected.push_back({"Balance", "Page " + std::to_string(i + 2)});
    }
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&, i] { lines[i] = linesOf(recognizer->read(frames[i])); });
        }
    }
    EXPECT_EQ(lines, expected);
}

}  // namespace
}  // namespace tandrel
