#include <array>

#include <fmt/format.h>

#include "image/image_reader.h"
#include "image/jpeg_writer.h"
#include "text/drawn_parts.h"

namespace tandrel {

namespace {

constexpr std::array<DrawPart, 14> kParts = {
    drawTitle, drawRows,    drawButtons,   drawForm,  drawKeypad, drawColumns, drawChips,
    drawTabs,  drawBubbles, drawBigAmount, drawChart, drawMap,    drawPhoto,   drawIconGrid};

constexpr std::array kTransmissions = {"clean", "jpeg90", "jpeg75", "noisy"};

// What a cable or a stream does to a picture.
PixelBuffer transmitted(const PixelBuffer& picture, int kind, std::mt19937& random) {
    if (kind == 1 || kind == 2) {
        const auto jpeg = withPixels(
            picture, [&](const Pixels& pixels) { return encodeJpeg(pixels, kind == 1 ? 90 : 75); });
        if (auto decoded = jpeg ? decodeImage(*jpeg) : fail("")) return *decoded;
    }
    if (kind != 3) return picture;
    return PixelBuffer::make(picture.width(), picture.height(), [&](std::uint8_t* to, int bytes) {
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width() * 4; ++x) {
                const int noisy = picture.row(y)[x] + static_cast<int>(random() % 7) - 3;
                to[std::ptrdiff_t{y} * bytes + x] =
                    static_cast<std::uint8_t>(std::clamp(noisy, 0, 255));
            }
        }
    });
}

KnownFrame finished(DrawnPage& page, const char* what, int index, std::mt19937& random) {
    const int kind = index % static_cast<int>(kTransmissions.size());
    return page.finish(fmt::format("{} {} {}", what, index, kTransmissions[kind]),
                       transmitted(page.frame().frame(), kind, random));
}

std::string nameOf(const char* what, DrawnUse use) {
    return fmt::format("{}{}", what, use == DrawnUse::kHeldBack ? ", held back" : "");
}

unsigned seedOf(DrawnUse use) { return use == DrawnUse::kHeldBack ? 47003 : 1; }

// A number that decides everything about frame `index`, whatever the other frames are.
std::mt19937 randomOf(DrawnUse use, int index) {
    return std::mt19937(seedOf(use) + static_cast<unsigned>(index) * 7919);
}

}  // namespace

FrameSet drawScreens(int count, DrawnUse use) {
    constexpr double kRoom = 250;  // the tallest part fits
    FrameSet set{.name = nameOf("drawn screens", use), .frames = {}};
    for (int i = 0; i < count; ++i) {
        std::mt19937 random = randomOf(use, i);
        DrawnPage page(random, use);
        double y = drawStatusBar(page, 4);
        // Every part comes in its turn, so that few frames show all of them.
        for (std::size_t part = static_cast<std::size_t>(i) * 3;
             y + kRoom + 80 < page.height() || part == static_cast<std::size_t>(i) * 3; ++part) {
            y = kParts[part % kParts.size()](page, y + 8);
        }
        set.frames.push_back(finished(page, "screen", i, random));
    }
    return set;
}

FrameSet drawAmounts(int count, DrawnUse use) {
    FrameSet set{.name = nameOf("amounts", use), .frames = {}};
    for (int i = 0; i < count; ++i) {
        std::mt19937 random = randomOf(use, 5000 + i);
        DrawnPage page(random, use);
        for (double y = 40; y < page.height() - 30;) {
            const double size = page.between(12, 34);
            y += size * 0.6;
            const Colour colour = page.pick(4) ? page.theme().ink : page.theme().faint;
            const std::string left = page.amount(), right = page.amount();
            const double smaller = std::min(size, 22.0);
            const double free =
                page.width() - 40 - page.widthOf(left, size) - page.widthOf(right, smaller);
            page.write(20, y, left, size, colour, {.isAmount = true});
            if (free > size) {
                page.writeBefore(page.width() - 20, y, right, smaller, colour, {.isAmount = true});
            }
            y += size;
        }
        set.frames.push_back(finished(page, "amounts", i, random));
    }
    return set;
}

}  // namespace tandrel
