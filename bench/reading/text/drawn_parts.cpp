#include "text/drawn_parts.h"

#include <array>

#include <fmt/format.h>

namespace tandrel {

namespace {

constexpr double kMargin = 18;

// An app's or a row's icon: a coloured plate with a simple white sign.
void drawIcon(DrawnPage& page, double x, double y, double size) {
    DrawnFrame& frame = page.frame();
    const Colour plate{page.between(0.1, 0.9), page.between(0.1, 0.9), page.between(0.1, 0.9)};
    frame.rectangle(x, y, size, size, size * 0.22, plate);
    const double middle = x + size / 2, half = size / 4;
    switch (page.pick(3)) {
        case 0:
            return frame.disc(middle, y + size / 2, half, kWhite);
        case 1:
            return frame.rectangle(middle - half, y + size / 2 - half * 0.7, 2 * half, 1.4 * half,
                                   size * 0.05, kWhite);
        default:
            frame.line(middle - half, y + size / 2, middle + half, y + size / 2, size / 12, kWhite);
            frame.line(middle, y + size / 2 - half, middle, y + size / 2 + half, size / 12, kWhite);
    }
}

void drawChevron(DrawnPage& page, double x, double y) {
    page.frame().line(x - 6, y - 6, x, y, 2, page.theme().faint);
    page.frame().line(x, y, x - 6, y + 6, 2, page.theme().faint);
}

}  // namespace

double drawStatusBar(DrawnPage& page, double y) {
    DrawnFrame& frame = page.frame();
    const DrawnTheme& theme = page.theme();
    const double right = page.width() - 24, baseline = y + 22;
    const double size = page.pick(2) ? 12 : 16;
    page.write(28, baseline, fmt::format("{}:{:02}", 1 + page.pick(23), page.pick(60)), size,
               theme.ink);
    for (int bar = 0; bar < 4; ++bar) {
        const double height = 3 + 2.5 * bar;
        frame.rectangle(right - 78 + bar * 5, baseline - height, 3, height, 1, theme.ink);
    }
    if (page.pick(2)) {
        frame.rectangle(right - 26, baseline - 12, 26, 13, 4, theme.ink);
        page.writeCentred(right - 13, baseline - 1.5, std::to_string(10 + page.pick(90)), 10,
                          theme.paper);
    } else {
        frame.outline(right - 24, baseline - 12, 24, 12, 3.5, theme.faint);
        frame.rectangle(right - 22, baseline - 10, 14, 8, 2, theme.ink);
    }
    return y + 34;
}

double drawTitle(DrawnPage& page, double y) {
    const double size = page.between(20, 60);
    page.writeFitting(kMargin, y + size + 6, page.width() - 2 * kMargin, page.words(), size,
                      page.theme().ink);
    return y + size * 1.3 + 12;
}

double drawRows(DrawnPage& page, double y) {
    const DrawnTheme& theme = page.theme();
    const double size = page.between(11, 20), left = page.pick(2) ? 62 : kMargin + 12;
    const bool onCard = page.pick(2), hasChevron = page.pick(2);
    const int rows = 3 + page.pick(4);
    if (onCard) {
        page.frame().rectangle(kMargin, y, page.width() - 2 * kMargin, rows * 44.0, 12, theme.card);
    }
    for (int row = 0; row < rows; ++row, y += 44) {
        const double baseline = y + 28, right = page.width() - kMargin - (hasChevron ? 28 : 12);
        if (left > 60) drawIcon(page, kMargin + 10, y + 8, 28);
        if (hasChevron) drawChevron(page, page.width() - kMargin - 10, y + 22);
        const std::string words = page.words(), amount = page.amount();
        page.write(left, baseline, words, size, theme.ink);
        const bool fits =
            left + page.widthOf(words, size) + page.widthOf(amount, size) + 24 < right;
        if (fits) {
            page.writeBefore(right, baseline, amount, size, theme.faint, {.isAmount = true});
        }
        if (row > 0) page.frame().line(left, y, page.width() - kMargin, y, 0.5, theme.faint);
    }
    return y + 12;
}

double drawButtons(DrawnPage& page, double y) {
    const DrawnTheme& theme = page.theme();
    DrawnFrame& frame = page.frame();
    const double width = page.width() - 2 * kMargin, half = (width - 12) / 2;
    const double radius = page.pick(2) ? 12 : 22, height = page.between(40, 56);
    const std::string words =
        page.pick(2) ? fmt::format("Pay {}", page.amount()) : page.buttonWords();
    const double size = page.between(13, 20);
    frame.rectangle(kMargin, y, width, height, radius, theme.button);
    page.writeCentred(page.width() / 2, y + height / 2 + size * 0.36, words, size, theme.onButton,
                      {.isPayLabel = true});
    const double next = y + height + 12;
    frame.outline(kMargin, next, half, 44, std::min(radius, 22.0), theme.button);
    page.writeCentred(kMargin + half / 2, next + 27, page.buttonWords(), 15, theme.button);
    frame.rectangle(kMargin + half + 12, next, half, 44, radius, theme.card);
    page.writeCentred(kMargin + half * 1.5 + 12, next + 27, page.buttonWords(), 15, theme.button);
    return next + 56;
}

double drawForm(DrawnPage& page, double y) {
    constexpr std::array kFields = {"Card number", "Expiry date", "Security code", "Name",
                                    "E-mail",      "Postcode",    "City",          "Amount"};
    constexpr std::array kHints = {"1234 5678 9012 3456", "MM/YY",  "3 digits", "Your name",
                                   "name@example.com",    "123-45", "Optional", "0.00"};
    const DrawnTheme& theme = page.theme();
    const double width = page.width() - 2 * kMargin;
    const bool outlined = page.pick(2);
    for (int row = 0; row < 3; ++row, y += 76) {
        page.write(kMargin, y + 12, page.oneOf(kFields), 12, theme.faint);
        if (outlined) {
            page.frame().outline(kMargin, y + 20, width, 44, 8, theme.faint);
        } else {
            page.frame().rectangle(kMargin, y + 20, width, 44, 8, theme.card);
        }
        page.write(kMargin + 12, y + 48, page.oneOf(kHints), 16,
                   page.pick(2) ? theme.faint : theme.ink);
    }
    return y;
}

double drawKeypad(DrawnPage& page, double y) {
    const DrawnTheme& theme = page.theme();
    const double size = page.between(20, 36), step = page.width() / 3;
    const int shape = page.pick(3);
    for (int key = 0; key < 10; ++key) {
        const double x = key == 9 ? page.width() / 2 : step * (key % 3 + 0.5);
        const double middle = y + 34 + 66 * (key / 3);
        if (shape == 1) page.frame().disc(x, middle, 29, theme.card);
        if (shape == 2)
            page.frame().rectangle(x - step / 2 + 4, middle - 28, step - 8, 56, 6, theme.card);
        page.writeCentred(x, middle + size * 0.36, std::to_string((key + 1) % 10), size, theme.ink);
    }
    return y + 4 * 66 + 12;
}

double drawColumns(DrawnPage& page, double y) {
    constexpr std::array kHeads = {"Date",  "Open", "High",  "Low",
                                   "Close", "Vol.", "Cases", "Total"};
    const DrawnTheme& theme = page.theme();
    const int columns = 3 + page.pick(2);
    const double size = page.between(10, 15), step = (page.width() - kMargin) / columns;
    for (int row = 0; row < 6; ++row, y += size * 1.9) {
        if (row % 2) {
            page.frame().rectangle(0, y, page.width(), size * 1.9, 0, theme.card);
        }
        for (int column = 0; column < columns; ++column) {
            const double right = step * (column + 1), baseline = y + size * 1.35;
            const int value = 1000 + page.pick(900000);
            if (row == 0) {
                page.writeBefore(right, baseline, page.oneOf(kHeads), size, theme.faint);
            } else {
                page.writeBefore(right, baseline,
                                 fmt::format("{},{:03}", value / 1000, value % 1000), size,
                                 theme.ink, {.isAmount = true});
            }
        }
    }
    return y + 14;
}

double drawChips(DrawnPage& page, double y) {
    const DrawnTheme& theme = page.theme();
    double x = kMargin;
    for (int row = 0; row < 2; ++row, y += 42, x = kMargin) {
        for (;;) {
            const std::string text =
                page.pick(4) ? page.words() : std::to_string(1 + page.pick(99));
            const double size = page.between(11, 15), width = page.widthOf(text, size) + 24;
            if (x + width > page.width() - kMargin) break;
            const int look = page.pick(3);
            if (look == 0) page.frame().outline(x, y, width, 30, 15, theme.faint);
            if (look == 1) page.frame().rectangle(x, y, width, 30, 15, theme.button);
            if (look == 2) page.frame().rectangle(x, y, width, 30, 8, theme.card);
            page.write(x + 12, y + 15 + size * 0.36, text, size,
                       look == 1   ? theme.onButton
                       : look == 2 ? theme.faint
                                   : theme.ink);
            x += width + 10;
        }
    }
    return y + 6;
}

double drawTabs(DrawnPage& page, double y) {
    constexpr std::array kTabs = {"Home", "Search", "Cart", "Orders", "Profile", "More", "Wallet"};
    const DrawnTheme& theme = page.theme();
    const int tabs = 3 + page.pick(3);
    page.frame().line(0, y, page.width(), y, 0.5, theme.faint);
    for (int tab = 0; tab < tabs; ++tab) {
        const double x = page.width() * (tab + 0.5) / tabs;
        const Colour colour = tab == 0 ? theme.button : theme.faint;
        if (page.pick(2)) {
            page.frame().disc(x, y + 18, 9, colour);
        } else {
            page.frame().rectangle(x - 10, y + 9, 20, 18, 4, colour);
        }
        page.writeCentred(x, y + 42, kTabs[static_cast<std::size_t>(tab + page.pick(2))], 10,
                          colour);
    }
    return y + 60;
}

double drawBubbles(DrawnPage& page, double y) {
    constexpr std::array kMessages = {
        "Are we still on for lunch?",  "Yes, at 12:30",  "OK",
        "I'll send you the money now", "No rush though", "See you at the station"};
    const DrawnTheme& theme = page.theme();
    for (int i = 0; i < 4; ++i, y += 46) {
        const std::string text =
            page.pick(4) ? page.oneOf(kMessages) : fmt::format("It was {}", page.amount());
        const double size = std::min(17.0, 17 * (page.width() - 80) / page.widthOf(text, 17));
        const double width = page.widthOf(text, size) + 26;
        const bool own = page.pick(2);
        const double x = own ? page.width() - width - kMargin : kMargin;
        page.frame().rectangle(x, y, width, 36, 18, own ? theme.button : theme.card);
        page.write(x + 13, y + 24, text, size, own ? theme.onButton : theme.ink);
    }
    return y + 6;
}

double drawBigAmount(DrawnPage& page, double y) {
    const double size = page.between(28, 56);
    const std::string amount = page.amount();
    const double fits = std::min(size, 50 * (page.width() - 40) / page.widthOf(amount, 50));
    page.writeCentred(page.width() / 2, y + size, amount, fits, page.theme().ink,
                      {.isAmount = true});
    page.writeCentred(page.width() / 2, y + size + 26, page.words(), page.between(10, 14),
                      page.theme().faint);
    return y + size + 46;
}

double drawIconGrid(DrawnPage& page, double y) {
    constexpr std::array kApps = {"Calendar", "Photos", "Mail",    "Notes", "Clock",  "Maps",
                                  "Health",   "Wallet", "Weather", "Files", "Stocks", "TV"};
    const double step = page.width() / 4;
    for (int i = 0; i < 8; ++i) {
        const double x = step * (i % 4 + 0.5), top = y + 92 * (i / 4);
        drawIcon(page, x - 30, top, 60);
        page.writeCentred(x, top + 75, page.oneOf(kApps), 12, page.theme().ink);
        if (page.pick(4) == 0) {
            page.frame().disc(x + 28, top + 2, 10, {1, 0.23, 0.19});
            page.writeCentred(x + 28, top + 7, std::to_string(1 + page.pick(9)), 13, kWhite,
                              {.isOptional = true});
        }
    }
    return y + 190;
}

}  // namespace tandrel
