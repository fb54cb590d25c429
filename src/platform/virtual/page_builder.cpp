#include "platform/virtual/page_builder.h"

#include <algorithm>

namespace tandrel {
namespace {

constexpr double kTile = 62;  // an icon on the home screen
constexpr double kTileRadius = 14;
constexpr double kGridPitch = 102;
constexpr double kRowHeight = 50;
constexpr double kRowGlyph = 30;
constexpr double kCardRadius = 12;
constexpr double kButtonHeight = 50;
constexpr double kSlideHeight = 64;
constexpr double kKnobGap = 4;

struct TextLook {
    double size;
    Weight weight;
    double gap;  // points below
};

constexpr TextLook look(TextKind kind) {
    switch (kind) {
        case TextKind::title:
            return {28, Weight::bold, 10};
        case TextKind::headline:
            return {20, Weight::semibold, 8};
        case TextKind::caption:
            return {13, Weight::regular, 10};
        case TextKind::amount:
            return {44, Weight::semibold, 12};
        case TextKind::body:
            break;
    }
    return {17, Weight::regular, 14};
}

void addTile(DisplayLayer& layer, const Rect& tile, double radius, const Color& color,
             const Glyph* glyph) {
    layer.shapes.push_back(BoxShape{tile, radius, color});
    layer.shapes.push_back(GlyphShape{tile.inset(tile.width * 0.2), glyph, kWhite});
}

}  // namespace

void addStatusBar(DisplayLayer& layer, const std::string& clock, const LayoutState& state,
                  const Color& color) {
    const TextStyle style{.size = 17, .weight = Weight::semibold, .color = color};
    layer.shapes.push_back(TextShape{{34, 20, 80, 24}, clock, style});
    const double right = state.width - 30;
    layer.shapes.push_back(GlyphShape{{right - 80, 23, 18, 18}, findGlyph("signal"), color});
    layer.shapes.push_back(GlyphShape{{right - 56, 22, 20, 20}, findGlyph("wifi"), color});
    layer.shapes.push_back(GlyphShape{{right - 30, 19, 27, 27}, findGlyph("battery"), color});
}

void addHomeIndicator(DisplayLayer& layer, const LayoutState& state, const Color& color) {
    constexpr double kWidth = 139;
    layer.shapes.push_back(
        BoxShape{{(state.width - kWidth) / 2, state.height - 13, kWidth, 5}, 2.5, color});
}

double addIcons(DisplayLayer& layer, const IconsItem& item, double width, double top) {
    constexpr double kSide = 14;
    const TextStyle label{
        .size = 12, .weight = Weight::medium, .color = kWhite, .align = TextStyle::Align::center};
    const auto columns = static_cast<std::size_t>(std::clamp(width / 100, 3.0, 8.0));
    const double cell = (width - 2 * kSide) / static_cast<double>(columns);
    const bool labelled = item.place == IconPlace::grid;
    double y = top;
    for (std::size_t i = 0; i < item.icons.size(); ++i) {
        const Icon& icon = item.icons[i];
        if (i > 0 && i % columns == 0) y += kGridPitch;
        const double x = kSide + static_cast<double>(i % columns) * cell;
        addTile(layer, {x + (cell - kTile) / 2, y, kTile, kTile}, kTileRadius, icon.color,
                icon.glyph);
        if (labelled)
            layer.shapes.push_back(TextShape{{x, y + kTile + 4, cell, 18}, icon.label, label});
        layer.areas.push_back(
            {{x + (cell - kTile) / 2 - 4, y - 4, kTile + 8, kTile + 26}, icon.label, icon.tap});
    }
    return item.icons.empty() ? top : y + kGridPitch;
}

void PageBuilder::add(const std::string& largeTitle) {
    addShape(TextShape{
        {kMargin, y_, innerWidth(), 44}, largeTitle, style(34, Weight::bold, theme_.label)});
    y_ += 54;
}

void PageBuilder::add(const IconsItem& item) { y_ = addIcons(layer_, item, state_.width, y_); }

void PageBuilder::addCaption(const std::string& text, double below) {
    if (text.empty()) return;
    TextStyle caption = style(13, Weight::regular, theme_.secondary);
    caption.lines = Lines::many;
    const double width = innerWidth() - 2 * kMargin;
    const double height = fonts_.measure(text, caption, width).height;
    addShape(TextShape{{2 * kMargin, y_, width, height}, text, caption});
    y_ += height + below;
}

void PageBuilder::add(const RowsItem& item) {
    addCaption(item.header, 7);
    const double height = kRowHeight * static_cast<double>(item.rows.size());
    addShape(BoxShape{{kMargin, y_, innerWidth(), height}, kCardRadius, theme_.card});
    for (std::size_t i = 0; i < item.rows.size(); ++i) {
        const Rect place{kMargin, y_, innerWidth(), kRowHeight};
        if (i > 0) {
            const double left = item.rows[i].glyph != nullptr ? kRowGlyph + 2 * kMargin : kMargin;
            addShape(BoxShape{
                {place.x + left, y_ - 0.25, place.width - left, 0.5}, 0, theme_.separator});
        }
        addRow(item.rows[i], place);
        y_ += kRowHeight;
    }
    y_ += 7;
    addCaption(item.footer, 0);
    y_ += 20;
}

void PageBuilder::addRow(const Row& row, const Rect& place) {
    addArea(place, row.text, row.tap ? TouchTarget(*row.tap) : TouchTarget(NoTarget{}));
    double left = place.x + kMargin;
    double right = place.x + place.width - kMargin;
    if (row.glyph != nullptr) {
        const double top = place.y + (kRowHeight - kRowGlyph) / 2;
        addTile(layer_, {left, top, kRowGlyph, kRowGlyph}, 7, row.color, row.glyph);
        left += kRowGlyph + kMargin;
    }
    if (!row.toggle.empty()) {
        addSwitch(row, place);
        right -= 60;
    } else if (row.tap) {
        addShape(GlyphShape{{right - 12, place.y + (kRowHeight - 15) / 2, 15, 15},
                            findGlyph("chevron"),
                            theme_.placeholder});
        right -= 20;
    }
    const TextStyle label = style(17, Weight::regular, theme_.label);
    const double labelWidth =
        std::min(fonts_.measure(row.text, label, right - left).width + 1, right - left);
    addShape(TextShape{{left, place.y, labelWidth, kRowHeight}, row.text, label});
    const double rest = right - left - labelWidth - 8;
    if (row.detail.empty() || rest <= 0) return;
    TextStyle detail = style(17, Weight::regular, theme_.secondary);
    detail.align = TextStyle::Align::right;
    addShape(TextShape{{right - rest, place.y, rest, kRowHeight}, row.detail, detail});
}

void PageBuilder::addSwitch(const Row& row, const Rect& place) {
    constexpr double kWidth = 51;
    constexpr double kHeight = 31;
    const auto state = state_.toggles.find(row.toggle);
    const bool on = state != state_.toggles.end() && state->second;
    const Rect track{place.x + place.width - kMargin - kWidth, place.y + (kRowHeight - kHeight) / 2,
                     kWidth, kHeight};
    addShape(BoxShape{track, kHeight / 2, on ? theme_.switchOn : theme_.fill});
    const double knob = on ? track.x + kWidth - kHeight + 2 : track.x + 2;
    addShape(BoxShape{{knob, track.y + 2, kHeight - 4, kHeight - 4}, kHeight / 2, kWhite});
    addArea(track.inset(-6), row.text, ToggleTarget{row.toggle});
}

void PageBuilder::add(const TextItem& item) {
    const TextLook kind = look(item.kind);
    TextStyle text = style(kind.size, kind.weight,
                           item.kind == TextKind::caption ? theme_.secondary : theme_.label);
    text.lines = Lines::many;
    if (item.align == TextAlign::center) text.align = TextStyle::Align::center;
    const double width = innerWidth() - 8;
    const double height = fonts_.measure(item.text, text, width).height;
    addShape(TextShape{{kMargin + 4, y_, width, height}, item.text, text});
    y_ += height + kind.gap;
}

void PageBuilder::add(const ButtonItem& item) {
    const Rect place{kMargin, y_, innerWidth(), kButtonHeight};
    Color ground = theme_.tint;
    Color label = kWhite;
    if (item.kind != ButtonKind::filled) label = theme_.tint;
    if (item.kind == ButtonKind::tinted) ground.alpha = 0.15;
    if (item.kind != ButtonKind::plain) addShape(BoxShape{place, 14, ground});
    TextStyle text = style(17, Weight::semibold, label);
    text.align = TextStyle::Align::center;
    addShape(TextShape{place, item.text, text});
    addArea(place, item.text, item.tap);
    y_ += kButtonHeight + 12;
}

void PageBuilder::add(const FieldItem& item) {
    const bool line = item.kind == FieldKind::line;
    const Rect place{kMargin, y_, innerWidth(), line ? kRowHeight : 260};
    addShape(BoxShape{place, kCardRadius,
                      state_.appearance == Appearance::light ? theme_.card : theme_.fill});
    addShape(BoxShape{{place.x, place.y + place.height, place.width, 0.5}, 0, theme_.separator});
    const auto typed = state_.fields.find(item.name);
    const std::string& text = typed == state_.fields.end() ? item.text : typed->second;
    const Rect inside =
        line ? Rect{place.x + kMargin, place.y, place.width - 2 * kMargin, kRowHeight}
             : place.inset(14);
    TextStyle textStyle =
        style(17, Weight::regular, text.empty() ? theme_.placeholder : theme_.label);
    textStyle.lines = line ? Lines::tail : Lines::many;
    addShape(TextShape{inside, text.empty() ? item.placeholder : text, textStyle});
    if (state_.focus == item.name) {
        const Point caret = fonts_.caret(text, textStyle, inside.width);
        const double top = line ? inside.y + 14 : inside.y + caret.y;
        addShape(BoxShape{{inside.x + caret.x + 0.5, top, 2, 22}, 1, theme_.tint});
    }
    addArea(place, item.name, FieldTarget{item.name});
    y_ += place.height + 12;
}

void PageBuilder::add(const ImageItem& item) {
    const Rect place{kMargin, y_, innerWidth(), item.height};
    if (item.glyph == nullptr) {
        addShape(PictureShape{place, kCardRadius, item.color, static_cast<std::uint32_t>(y_)});
    } else {
        addShape(BoxShape{place, kCardRadius, item.color});
        addShape(GlyphShape{place.inset(item.height * 0.2), item.glyph, kWhite});
    }
    y_ += item.height + 14;
}

void PageBuilder::add(const SlideItem& item) {
    const Rect track{kMargin, y_, innerWidth(), kSlideHeight};
    const double distance = track.width - kSlideHeight;
    const double offset =
        state_.slide == item.text ? std::clamp(state_.slideOffset, 0.0, distance) : 0;
    addShape(BoxShape{track, kSlideHeight / 2, theme_.fill});
    TextStyle text = style(19, Weight::semibold, theme_.label);
    text.align = TextStyle::Align::center;
    addShape(TextShape{{track.x + kSlideHeight, track.y, distance, kSlideHeight}, item.text, text});
    const Rect knob = Rect{track.x + offset, track.y, kSlideHeight, kSlideHeight}.inset(kKnobGap);
    addShape(BoxShape{knob, knob.width / 2, theme_.tint});
    addShape(GlyphShape{knob.inset(knob.width * 0.28), findGlyph("chevron"), kWhite});
    addArea(track, item.text, NoTarget{});
    addArea(knob, item.text, SlideTarget{.distance = distance, .done = item.done});
    y_ += kSlideHeight + 14;
}

}  // namespace tandrel
