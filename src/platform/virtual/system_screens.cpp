#include <algorithm>
#include <string_view>

#include "base/unicode.h"
#include "platform/virtual/layout.h"
#include "platform/virtual/page_builder.h"

namespace tandrel {
namespace {

constexpr std::size_t kMostResults = 8;

TextStyle centered(double size, Weight weight) {
    return {.size = size, .weight = weight, .color = kWhite, .align = TextStyle::Align::center};
}

void addResult(DisplayLayer& layer, const Icon& icon, const Rect& place, const Theme& colors) {
    const Rect tile{place.x + 12, place.y + 8, 44, 44};
    layer.shapes.push_back(BoxShape{tile, 10, icon.color});
    layer.shapes.push_back(GlyphShape{tile.inset(9), icon.glyph, kWhite});
    layer.shapes.push_back(TextShape{{place.x + 70, place.y, place.width - 82, place.height},
                                     icon.label,
                                     {.size = 17, .color = colors.label}});
    layer.areas.push_back({place, icon.label, SearchResultTarget{icon.tap}});
}

// What begins with the query: the label, one of its later words, or nothing.
enum class Fit { beginning, word, none };

Fit fitOf(const std::string& label, const std::string& query) {
    const std::string text = lowerCased(label);
    if (text.starts_with(query)) return Fit::beginning;
    return text.contains(" " + query) ? Fit::word : Fit::none;
}

std::vector<const Icon*> iconsOf(const Scenario& scenario) {
    std::vector<const Icon*> all;
    for (const Page& page : scenario.pages) {
        for (const Item& item : page.items) {
            const auto* icons = std::get_if<IconsItem>(&item);
            if (icons == nullptr) continue;
            for (const Icon& icon : icons->icons) all.push_back(&icon);
        }
    }
    return all;
}

}  // namespace

DisplayList layOutLockScreen(const PhoneTraits& phone, const LayoutState& state,
                             LockPrompt prompt) {
    DisplayList list;
    const double width = state.width;
    auto& shapes = list.bars.shapes;
    shapes.push_back(GradientShape{{0, 0, width, state.height}, rgb(0x1B2A49), rgb(0x40204F)});
    addHomeIndicator(list.bars, state, kWhite);
    if (prompt == LockPrompt::passcode) {
        shapes.push_back(TextShape{
            {0, state.height * 0.2, width, 30}, "Enter Passcode", centered(20, Weight::regular)});
        for (int dot = 0; dot < 6; ++dot) {
            shapes.push_back(BoxShape{{width / 2 - 84 + 30.0 * dot, state.height * 0.27, 13, 13},
                                      6.5,
                                      rgb(0xFFFFFF, 0.35)});
        }
        return list;
    }
    shapes.push_back(GlyphShape{{width / 2 - 12, 66, 24, 24}, findGlyph("lock"), kWhite});
    shapes.push_back(
        TextShape{{0, state.height * 0.13, width, 28}, phone.date, centered(21, Weight::semibold)});
    shapes.push_back(
        TextShape{{0, state.height * 0.16, width, 100}, phone.clock, centered(92, Weight::bold)});
    shapes.push_back(TextShape{{0, state.height - 62, width, 24},
                               phone.passcode ? "Swipe up to unlock" : "Swipe up to open",
                               centered(16, Weight::medium)});
    return list;
}

DisplayList layOutSearch(const PhoneTraits& phone, const LayoutState& state,
                         const std::string& query, const std::vector<const Icon*>& found) {
    const Theme& colors = theme(state.appearance);
    const double width = state.width - 2 * kMargin;
    DisplayList list;
    list.background = colors.grouped;
    DisplayLayer& layer = list.bars;
    addStatusBar(layer, phone.clock, state, colors.label);
    addHomeIndicator(layer, state, colors.label);
    double y = kStatusBar + 12;
    const auto header = [&](const std::string& text) {
        layer.shapes.push_back(
            TextShape{{kMargin + 4, y, width, 26},
                      text,
                      {.size = 15, .weight = Weight::semibold, .color = colors.secondary}});
        y += 32;
    };
    const Rect field{kMargin, y, width, 46};
    layer.shapes.push_back(BoxShape{field, 14, colors.fill});
    layer.shapes.push_back(
        GlyphShape{{field.x + 12, y + 14, 18, 18}, findGlyph("magnifier"), colors.secondary});
    layer.shapes.push_back(TextShape{{field.x + 40, y, width - 52, 46},
                                     query.empty() ? "Search" : query,
                                     {.size = 17,
                                      .color = query.empty() ? colors.placeholder : colors.label,
                                      .lines = Lines::tail}});
    layer.areas.push_back({field, "Search", NoTarget{}});
    y += 66;
    if (query.empty()) {
        header("Siri Suggestions");
        return list;
    }
    header(found.empty() ? "No Results" : "Top Hit");
    for (std::size_t i = 0; i < std::min(found.size(), kMostResults); ++i) {
        if (i == 1) header("Apps");
        const Rect place{kMargin, y, width, 60};
        layer.shapes.push_back(BoxShape{place, 12, colors.card});
        addResult(layer, *found[i], place, colors);
        y += 72;
    }
    header("Search Web");
    return list;
}

std::vector<const Icon*> searchIcons(const Scenario& scenario, const std::string& query) {
    const std::string wanted = lowerCased(trimmed(query));
    std::vector<const Icon*> found;
    if (wanted.empty()) return found;
    const auto icons = iconsOf(scenario);
    for (const Fit fit : {Fit::beginning, Fit::word}) {
        for (const Icon* icon : icons) {
            if (fitOf(icon->label, wanted) == fit) found.push_back(icon);
        }
    }
    return found;
}

}  // namespace tandrel
