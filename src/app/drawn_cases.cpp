#include "app/drawn_cases.h"

#include <algorithm>

#include <fmt/format.h>

#include "image/image_reader.h"
#include "payments/gate_road.h"
#include "platform/linux/linux_text_recognizer.h"
#include "platform/virtual/frame_painter.h"
#include "platform/virtual/phone_model.h"

namespace tandrel {
namespace {

using PaymentGuard::JudgedScreen;
using PaymentGuard::RowKind;
using PaymentGuard::WrittenAction;
using PaymentGuard::WrittenRow;
using PaymentGuard::WrittenScreen;

constexpr double kSymbolHeight = 60;  // points
constexpr Color kSymbolGround = rgb(0x1F8A46);

Item itemOf(const WrittenRow& row) {
    switch (row.kind) {
        case RowKind::title:
            return TextItem{.text = row.text, .kind = TextKind::title};
        case RowKind::centred:
            return TextItem{
                .text = row.text, .kind = TextKind::headline, .align = TextAlign::center};
        case RowKind::row:
            return RowsItem{
                .header = {},
                .footer = {},
                .rows = {Row{
                    .text = row.text, .detail = row.detail, .color = {}, .toggle = {}, .tap = {}}}};
        case RowKind::button:
            return ButtonItem{.text = row.text, .tap = {}};
        case RowKind::plainButton:
            return ButtonItem{.text = row.text, .kind = ButtonKind::plain, .tap = {}};
        case RowKind::slider:
            return SlideItem{.text = row.text, .done = {}};
        case RowKind::field:
            return FieldItem{.name = row.text, .placeholder = row.text, .text = {}, .submit = {}};
        case RowKind::symbol:
            return ImageItem{
                .height = kSymbolHeight, .color = kSymbolGround, .glyph = findGlyph(row.text)};
        case RowKind::text:
        case RowKind::cells:
        case RowKind::bottom:
            break;
    }
    return TextItem{.text = row.text};
}

// The page's rows; neighbours among them share a card.
Page pageOf(const WrittenScreen& screen) {
    Page page{.name = "case",
              .title = {},
              .back = {},
              .over = {},
              .sideButton = {},
              .later = {},
              .items = {}};
    bool inCard = false;
    for (std::size_t i = 0; i < screen.size(); ++i) {
        if (i == 0 && screen[i].kind == RowKind::title) {
            page.title = screen[i].text;
            continue;
        }
        Item item = itemOf(screen[i]);
        auto* rows = std::get_if<RowsItem>(&item);
        if (rows != nullptr && inCard) {
            std::get<RowsItem>(page.items.back()).rows.push_back(rows->rows.front());
        } else {
            page.items.push_back(std::move(item));
        }
        inCard = rows != nullptr;
    }
    return page;
}

Scenario scenarioOf(const WrittenScreen& screen) {
    Scenario scenario;
    scenario.phone.width =
        static_cast<int>(PaymentGuard::kWrittenWidth * PaymentGuard::kWrittenScale);
    scenario.phone.height =
        static_cast<int>(PaymentGuard::kWrittenHeight * PaymentGuard::kWrittenScale);
    scenario.phone.scale = PaymentGuard::kWrittenScale;
    scenario.phone.clock = "9:41";
    scenario.home = scenario.start = "case";
    scenario.pages.push_back(pageOf(screen));
    return scenario;
}

// The middle of the text's first line.
Point middleOf(const TextShape& shape, Fonts& fonts) {
    const auto ink = fonts.measure(shape.text, shape.style, shape.rect.width);
    const double width = std::min(ink.width, shape.rect.width);
    Point middle = shape.rect.center();
    if (shape.style.align == TextStyle::Align::left) middle.x = shape.rect.x + width / 2;
    if (shape.style.align == TextStyle::Align::right)
        middle.x = shape.rect.x + shape.rect.width - width / 2;
    if (shape.style.lines == Lines::many) middle.y = shape.rect.y + 0.6 * shape.style.size;
    return middle;
}

// Where the page shows the text, or the symbol of that name.
std::optional<Point> placeOf(const std::string& text, RowKind kind, const DisplayList& list,
                             Fonts& fonts) {
    for (const Shape& shape : list.content.shapes) {
        const auto* glyph = std::get_if<GlyphShape>(&shape);
        if (glyph != nullptr && kind == RowKind::symbol) return glyph->rect.center();
        const auto* words = std::get_if<TextShape>(&shape);
        if (words != nullptr && words->text == text && kind != RowKind::symbol)
            return middleOf(*words, fonts);
    }
    return std::nullopt;
}

// What the action is aimed at: its row, or for a swipe the slider.
const WrittenRow* targetOf(const WrittenScreen& screen, const WrittenAction& action) {
    if (action.kind == PaymentGuard::Kind::tap) return &screen[action.row];
    const auto slider = std::ranges::find(screen, RowKind::slider, &WrittenRow::kind);
    return slider == screen.end() ? nullptr : &*slider;
}

}  // namespace

DrawnCases::DrawnCases(std::unique_ptr<TextRecognizer> recognizer)
    : recognizer_(std::move(recognizer)) {}

Result<std::unique_ptr<DrawnCases>> DrawnCases::make() {
    auto recognizer = TRY(makeTextRecognizer());
    return std::unique_ptr<DrawnCases>(new DrawnCases(std::move(recognizer)));
}

Result<JudgedScreen> DrawnCases::draw(const WrittenScreen& screen, const WrittenAction& action) {
    for (const auto& row : screen) {
        if (row.kind == RowKind::symbol && findGlyph(row.text) == nullptr)
            return fail(fmt::format("there is no symbol \"{}\"", row.text));
        if (row.kind == RowKind::cells || row.kind == RowKind::bottom)
            return fail(fmt::format("\"{}\" can't be drawn", row.written));
    }
    const Scenario scenario = scenarioOf(screen);
    PhoneModel phone(scenario, fonts_);
    const auto look = phone.look();
    if (look.display == nullptr || look.display->contentHeight > look.height)
        return fail("its rows are higher than the screen");
    Point place;
    if (const WrittenRow* target = targetOf(screen, action)) {
        const auto& text = action.cell > 0 ? target->detail : target->text;
        const auto found = placeOf(text, target->kind, *look.display, fonts_);
        if (!found) return fail(fmt::format("\"{}\" is not on the picture", text));
        place = *found;
    }
    FramePainter painter(fonts_, scenario.phone.scale);
    return judged(painter.paint(phone), PaymentGuard::actionAt(screen, action, place.x, place.y));
}

Result<JudgedScreen> DrawnCases::read(const std::filesystem::path& picture,
                                      const PaymentGuard::Action& action) {
    const PixelBuffer pixels = TRY(readImage(picture));
    return judged(pixels, action);
}

Result<JudgedScreen> DrawnCases::judged(const PixelBuffer& picture, PaymentGuard::Action action) {
    const PaymentGuard::FrameSize size{static_cast<double>(picture.width()),
                                       static_cast<double>(picture.height())};
    const ScreenReading reading = screenReading(picture, recognizer_->read(picture), size);
    const auto* frame = std::get_if<GateFrame>(&reading);
    if (frame == nullptr) return fail("its picture can't be read");
    return JudgedScreen{frame->size, frame->lines, std::move(action)};
}

}  // namespace tandrel
