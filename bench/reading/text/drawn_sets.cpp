#include <array>
#include <random>

#include <fmt/format.h>

#include "image/image_reader.h"
#include "image/jpeg_writer.h"
#include "reading/drawn_frame.h"
#include "text/known_frame.h"

namespace tandrel {

namespace {

constexpr std::array kFonts = {
    "Inter",           "DejaVu Sans",      "Liberation Sans",  "Noto Sans",
    "Inter Semi-Bold", "DejaVu Sans Bold", "Noto Sans Medium", "Liberation Sans Bold",
    "Inter Light",     "Noto Serif"};
constexpr std::array kWords = {"Settings",         "Notifications",     "Account",
                               "Order history",    "Payment methods",   "Privacy",
                               "Add a card",       "Shipping",          "Help and support",
                               "Sign out",         "Balance",           "Transfers",
                               "Recent",           "Delivery tomorrow", "Wi-Fi",
                               "Bluetooth",        "General",           "Display and brightness",
                               "Storage",          "Family sharing",    "Language",
                               "Invite friends",   "Security",          "Face ID and passcode",
                               "Groceries",        "Rent for March",    "Coffee at the station",
                               "Electricity bill", "Savings",           "Next payment due"};
constexpr std::array kButtons = {"Pay now",     "Confirm",     "Continue", "Buy",      "Subscribe",
                                 "Place order", "Add to cart", "Send",     "Checkout", "Transfer"};

struct Theme {
    Colour paper;
    Colour ink;
    Colour faint;
    Colour button;
    Colour onButton;
};

constexpr std::array<Theme, 6> kThemes = {{
    {{1, 1, 1}, {0, 0, 0}, {0.56, 0.56, 0.58}, {0, 0.48, 1}, {1, 1, 1}},
    {{0.95, 0.95, 0.97}, {0.1, 0.1, 0.12}, {0.5, 0.5, 0.53}, {0.2, 0.78, 0.35}, {1, 1, 1}},
    {{0, 0, 0}, {1, 1, 1}, {0.55, 0.55, 0.58}, {0.04, 0.52, 1}, {1, 1, 1}},
    {{0.11, 0.11, 0.12}, {0.92, 0.92, 0.95}, {0.5, 0.5, 0.52}, {1, 0.62, 0.04}, {0, 0, 0}},
    {{0.98, 0.94, 0.86}, {0.3, 0.2, 0.1}, {0.6, 0.52, 0.45}, {0.1, 0.1, 0.1}, {1, 1, 1}},
    {{0.12, 0.16, 0.3}, {0.9, 0.92, 1}, {0.55, 0.6, 0.75}, {0.95, 0.8, 0.2}, {0.1, 0.1, 0.1}},
}};

// Draws one page and remembers its lines.
class Page {
 public:
    explicit Page(std::mt19937& random)
        : random_(random),
          density_(1 + pick(3)),
          theme_(kThemes[pick(kThemes.size())]),
          font_(kFonts[pick(kFonts.size())]),
          frame_(390 * density_, 844 * density_, density_, theme_.paper) {}

    int pick(std::size_t count) { return static_cast<int>(random_() % count); }
    const Theme& theme() const { return theme_; }
    DrawnFrame& frame() { return frame_; }

    double write(double x, double y, const std::string& text, double points, Colour colour,
                 KnownLine line = {}) {
        const auto extent = frame_.text(x, y, text, {font_, points, colour});
        line.text = text;
        line.box =
            PixelBox{static_cast<int>(x * density_), static_cast<int>((y - points) * density_),
                     static_cast<int>((x + extent) * density_), static_cast<int>(y * density_)};
        lines_.push_back(std::move(line));
        return extent;
    }
    // In the ink's colour and as large as asked for, or as fits the page.
    void writeTitle(double x, double y, const std::string& text, double points) {
        const double fits = (370 - x) / frame_.width(text, {font_, 50, {}}) * 50;
        write(x, y, text, std::min(points, fits), theme_.ink);
    }
    // The same with its right end at `right`.
    void writeBefore(double right, double y, const std::string& text, double points, Colour colour,
                     KnownLine line = {}) {
        write(right - frame_.width(text, {font_, points, colour}), y, text, points, colour,
              std::move(line));
    }
    void writeCentred(double centre, double y, const std::string& text, double points,
                      Colour colour, KnownLine line = {}) {
        write(centre - frame_.width(text, {font_, points, colour}) / 2, y, text, points, colour,
              std::move(line));
    }

    KnownFrame finish(const std::string& name, PixelBuffer picture) {
        return {fmt::format("{} {}x {}", name, density_, font_), std::move(picture),
                std::move(lines_)};
    }

 private:
    std::mt19937& random_;
    const int density_;
    const Theme theme_;
    const std::string font_;
    DrawnFrame frame_;
    std::vector<KnownLine> lines_;
};

std::string amount(std::mt19937& random) {
    const auto cents = static_cast<int>(random() % 100);
    constexpr std::array<unsigned, 4> kLimits = {10, 100, 1000, 100000};
    const auto whole = static_cast<int>(random() % kLimits[random() % kLimits.size()]);
    const std::string thousands =
        whole >= 1000 ? fmt::format("{},{:03}", whole / 1000, whole % 1000) : std::to_string(whole);
    switch (random() % 6) {
        case 0:
            return fmt::format("€{}.{:02}", thousands, cents);
        case 1:
            return fmt::format("${}.{:02}", thousands, cents);
        case 2:
            return fmt::format("£{}.{:02}", thousands, cents);
        case 3:
            return fmt::format("{},{:02} €", whole, cents);
        case 4:
            return fmt::format("-${}.{:02}", thousands, cents);
        default:
            return fmt::format("${}", thousands);
    }
}

void drawRows(Page& page, std::mt19937& random, double y) {
    const Theme& theme = page.theme();
    const double size = 12 + page.pick(8);
    for (int row = 0; row < 7; ++row, y += 44) {
        page.write(20, y, kWords[page.pick(kWords.size())], size, theme.ink);
        page.writeBefore(360, y, amount(random), size, theme.faint, {.isAmount = true});
        if (row % 2) page.frame().rectangle(20, y + 14, 370, 0.5, 0, theme.faint);
    }
}

void drawButtons(Page& page, std::mt19937& random, double y) {
    const Theme& theme = page.theme();
    const std::string words =
        page.pick(2) ? fmt::format("Pay {}", amount(random)) : kButtons[page.pick(kButtons.size())];
    const double radius = page.pick(2) ? 12 : 25;
    page.frame().rectangle(20, y, 350, 50, radius, theme.button);
    page.writeCentred(195, y + 31, words, 14 + page.pick(6), theme.onButton, {.isPayLabel = true});
    page.frame().outline(20, y + 62, 168, 44, radius * 0.8, theme.button);
    page.writeCentred(104, y + 89, kButtons[page.pick(kButtons.size())], 15, theme.button);
    page.frame().rectangle(202, y + 62, 168, 44, radius * 0.8, theme.faint);
    page.writeCentred(286, y + 89, kButtons[page.pick(kButtons.size())], 15, theme.paper);
}

void drawKeypad(Page& page, double y) {
    for (int key = 0; key < 10; ++key) {
        const double x = 75 + key % 3 * 120;
        page.writeCentred(key == 9 ? 195 : x, y + 50 * (key / 3), std::to_string((key + 1) % 10),
                          24 + page.pick(10), page.theme().ink);
    }
}

void drawColumns(Page& page, std::mt19937& random, double y) {
    for (int row = 0; row < 5; ++row, y += 26) {
        for (int column = 0; column < 3; ++column) {
            const auto value = static_cast<int>(random() % 900000) + 1000;
            page.writeBefore(120 + column * 120, y,
                             fmt::format("{},{:03}", value / 1000, value % 1000), 13,
                             page.theme().ink, {.isAmount = true});
        }
    }
}

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

constexpr std::array kTransmissions = {"clean", "jpeg90", "jpeg75", "noisy"};

}  // namespace

FrameSet drawScreens(int count, unsigned seed) {
    std::mt19937 random(seed);
    FrameSet set{.name = "drawn screens", .frames = {}};
    for (int i = 0; i < count; ++i) {
        Page page(random);
        page.writeCentred(195, 40, kWords[page.pick(kWords.size())], 16, page.theme().ink);
        page.writeTitle(20, 100, kWords[page.pick(kWords.size())], 28 + page.pick(33));
        drawRows(page, random, 160);
        drawButtons(page, random, 480);
        if (i % 2) {
            drawKeypad(page, 640);
        } else {
            drawColumns(page, random, 630);
        }
        const int kind = i % static_cast<int>(kTransmissions.size());
        auto picture = transmitted(page.frame().frame(), kind, random);
        set.frames.push_back(
            page.finish(fmt::format("screen {} {}", i, kTransmissions[kind]), std::move(picture)));
    }
    return set;
}

FrameSet drawAmounts(int count, unsigned seed) {
    std::mt19937 random(seed);
    FrameSet set{.name = "amounts", .frames = {}};
    for (int i = 0; i < count; ++i) {
        Page page(random);
        for (double y = 40; y < 820;) {
            const double size = 12 + page.pick(23);
            y += size * 0.6;
            const bool faint = page.pick(4) == 0;
            const Colour colour = faint ? page.theme().faint : page.theme().ink;
            page.write(20, y, amount(random), size, colour, {.isAmount = true});
            page.writeBefore(370, y, amount(random), std::min(size, 24.0), colour,
                             {.isAmount = true});
            y += size;
        }
        const int kind = i % static_cast<int>(kTransmissions.size());
        auto picture = transmitted(page.frame().frame(), kind, random);
        set.frames.push_back(
            page.finish(fmt::format("amounts {} {}", i, kTransmissions[kind]), std::move(picture)));
    }
    return set;
}

}  // namespace tandrel
