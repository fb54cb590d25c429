#include "text/drawn_page.h"

#include <array>

#include <fmt/format.h>

namespace tandrel {

namespace {

// The fonts of the frames held back appear in none of the others.
constexpr std::array kFonts = {
    "Inter",           "DejaVu Sans",      "Liberation Sans",  "Noto Sans",
    "Inter Semi-Bold", "DejaVu Sans Bold", "Noto Sans Medium", "Liberation Sans Bold",
    "Inter Light",     "Noto Serif"};
constexpr std::array kFontsHeldBack = {
    "Inter Medium",           "Inter Bold",   "DejaVu Sans Condensed", "Noto Sans Semi-Bold",
    "Liberation Sans Narrow", "DejaVu Serif", "Inter Display"};

constexpr std::array kWords = {"Settings",
                               "Notifications",
                               "Account",
                               "Order history",
                               "Payment methods",
                               "Privacy",
                               "Add a card",
                               "Shipping",
                               "Help and support",
                               "Sign out",
                               "Balance",
                               "Transfers",
                               "Recent",
                               "Delivery tomorrow",
                               "Wi-Fi",
                               "Bluetooth",
                               "General",
                               "Display and brightness",
                               "Storage",
                               "Family sharing",
                               "Language",
                               "Invite friends",
                               "Security",
                               "Face ID and passcode",
                               "Groceries",
                               "Rent for March",
                               "Coffee at the station",
                               "Electricity bill",
                               "Savings",
                               "Next payment due",
                               "On",
                               "Off",
                               "git",
                               "PT",
                               "No",
                               "Aa",
                               "12 items",
                               "24 Nov 2026",
                               "10:45",
                               "2 of 3",
                               "iOS 17.2",
                               "+49 30 901820"};
constexpr std::array kButtons = {"Pay now",     "Confirm",     "Continue", "Buy",  "Subscribe",
                                 "Place order", "Add to cart", "Send",     "OK",   "Checkout",
                                 "Transfer",    "Redeem",      "Top up",   "Save", "Sign in"};

constexpr std::array<DrawnTheme, 7> kThemes = {{
    {{1, 1, 1}, {0, 0, 0}, {0.56, 0.56, 0.58}, {0.95, 0.95, 0.97}, {0, 0.48, 1}, {1, 1, 1}},
    {{0.95, 0.95, 0.97},
     {0.1, 0.1, 0.12},
     {0.5, 0.5, 0.53},
     {1, 1, 1},
     {0.2, 0.78, 0.35},
     {1, 1, 1}},
    {{0, 0, 0}, {1, 1, 1}, {0.55, 0.55, 0.58}, {0.11, 0.11, 0.12}, {0.04, 0.52, 1}, {1, 1, 1}},
    {{0.11, 0.11, 0.12},
     {0.92, 0.92, 0.95},
     {0.5, 0.5, 0.52},
     {0.17, 0.17, 0.18},
     {1, 0.62, 0.04},
     {0, 0, 0}},
    {{0.98, 0.94, 0.86},
     {0.3, 0.2, 0.1},
     {0.6, 0.52, 0.45},
     {1, 0.98, 0.94},
     {0.1, 0.1, 0.1},
     {1, 1, 1}},
    {{0.12, 0.16, 0.3},
     {0.9, 0.92, 1},
     {0.55, 0.6, 0.75},
     {0.17, 0.22, 0.4},
     {0.95, 0.8, 0.2},
     {0.1, 0.1, 0.1}},
    {{1, 1, 1}, {0.25, 0.25, 0.3}, {0.7, 0.7, 0.73}, {0.9, 0.9, 0.92}, {0.85, 0.1, 0.3}, {1, 1, 1}},
}};

struct ScreenSize {
    double width, height;
};
constexpr std::array<ScreenSize, 5> kSizes = {
    {{390, 844}, {320, 568}, {375, 667}, {430, 932}, {414, 896}}};

ScreenSize sizeOf(std::mt19937& random) { return kSizes[random() % kSizes.size()]; }

std::string fontOf(std::mt19937& random, DrawnUse use) {
    if (use == DrawnUse::kHeldBack) return kFontsHeldBack[random() % kFontsHeldBack.size()];
    return kFonts[random() % kFonts.size()];
}

}  // namespace

DrawnPage::DrawnPage(std::mt19937& random, DrawnUse use)
    : random_(random),
      density_(std::array{1, 2, 2, 3, 3}[random() % 5]),
      width_(density_ == 3 ? 390 : kSizes[random() % kSizes.size()].width),
      height_(sizeOf(random).height),
      theme_(kThemes[random() % kThemes.size()]),
      font_(fontOf(random, use)),
      frame_(static_cast<int>(width_) * density_, static_cast<int>(height_) * density_, density_,
             theme_.paper) {}

std::string DrawnPage::words() { return oneOf(kWords); }

std::string DrawnPage::buttonWords() { return oneOf(kButtons); }

std::string DrawnPage::amount() {
    constexpr std::array<unsigned, 4> kLimits = {10, 100, 1000, 100000};
    const int cents = pick(100), whole = pick(oneOf(kLimits));
    const std::string thousands =
        whole >= 1000 ? fmt::format("{},{:03}", whole / 1000, whole % 1000) : std::to_string(whole);
    switch (pick(8)) {
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
        case 5:
            return fmt::format("+€{}.{:02}", thousands, cents);
        case 6:
            return fmt::format("{}.{:02} €", thousands, cents);
        default:
            return fmt::format("${}", thousands);
    }
}

double DrawnPage::write(double x, double y, const std::string& text, double points, Colour colour,
                        KnownLine line) {
    const auto extent = frame_.text(x, y, text, {font_, points, colour});
    line.text = text;
    line.box = PixelBox{static_cast<int>(x * density_), static_cast<int>((y - points) * density_),
                        static_cast<int>((x + extent) * density_), static_cast<int>(y * density_)};
    lines_.push_back(std::move(line));
    return extent;
}

void DrawnPage::writeBefore(double right, double y, const std::string& text, double points,
                            Colour colour, KnownLine line) {
    write(right - widthOf(text, points), y, text, points, colour, std::move(line));
}

void DrawnPage::writeCentred(double centre, double y, const std::string& text, double points,
                             Colour colour, KnownLine line) {
    write(centre - widthOf(text, points) / 2, y, text, points, colour, std::move(line));
}

void DrawnPage::writeFitting(double x, double y, double room, const std::string& text,
                             double points, Colour colour) {
    write(x, y, text, std::min(points, room / widthOf(text, 50) * 50), colour);
}

double DrawnPage::widthOf(const std::string& text, double points) const {
    return frame_.width(text, {font_, points, {}});
}

KnownFrame DrawnPage::finish(const std::string& name, PixelBuffer picture) {
    return {fmt::format("{} {}x{}@{} {}", name, width_, height_, density_, font_),
            std::move(picture), std::move(lines_)};
}

}  // namespace tandrel
