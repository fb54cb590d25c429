#include "platform/virtual/layout.h"
#include "platform/virtual/page_builder.h"

namespace tandrel {
namespace {

constexpr double kDock = 96;
constexpr double kDockGap = 12;

Action leadTo(const std::string& page) {
    Action action;
    action.go = page;
    return action;
}

// Wallpaper, icons, the search button, and the dock.
DisplayList layOutHome(const PhoneTraits& phone, const Page& page, const LayoutState& state,
                       Fonts& fonts) {
    DisplayList list;
    const bool dark = state.appearance == Appearance::dark;
    list.bars.shapes.push_back(GradientShape{{0, 0, state.width, state.height},
                                             dark ? rgb(0x0B1026) : rgb(0x274B8F),
                                             dark ? rgb(0x23143A) : rgb(0x5A3C86)});
    PageBuilder grid(state, fonts, kStatusBar + 26);
    const Rect dock{kDockGap, state.height - kDockGap - kDock, state.width - 2 * kDockGap, kDock};
    const Rect search{state.width / 2 - 45, dock.y - 46, 90, 32};
    DisplayLayer docked;
    docked.shapes.push_back(BoxShape{dock, 32, rgb(0xFFFFFF, 0.25)});
    for (const Item& item : page.items) {
        const auto* icons = std::get_if<IconsItem>(&item);
        if (icons != nullptr && icons->place == IconPlace::dock) {
            addIcons(docked, *icons, state.width, dock.y + (kDock - 62) / 2);
        } else {
            grid.add(item);
        }
    }
    list.bars.append(grid.take(), 0);
    list.bars.shapes.push_back(BoxShape{search, 16, rgb(0xFFFFFF, 0.22)});
    list.bars.shapes.push_back(
        GlyphShape{{search.x + 12, search.y + 9, 14, 14}, findGlyph("magnifier"), kWhite});
    list.bars.shapes.push_back(TextShape{{search.x + 30, search.y, 60, 32},
                                         "Search",
                                         {.size = 14, .weight = Weight::medium, .color = kWhite}});
    list.bars.areas.push_back({search, "Search", SearchTarget{}});
    list.bars.append(docked, 0);
    addStatusBar(list.bars, phone.clock, state, kWhite);
    return list;
}

void addNavigationBar(DisplayLayer& bars, const Scenario& scenario, const Page& page,
                      const LayoutState& state, const Color& ground) {
    const Theme& colors = theme(state.appearance);
    bars.shapes.push_back(BoxShape{
        {0, 0, state.width, kStatusBar + (page.back.empty() ? 0 : kNavigationBar)}, 0, ground});
    bars.areas.push_back({{0, 0, state.width, kStatusBar}, "", NoTarget{}});
    addStatusBar(bars, scenario.phone.clock, state, colors.label);
    if (page.back.empty()) return;
    const Page* previous = scenario.find(page.back);
    const Rect back{4, kStatusBar, state.width * 0.3, kNavigationBar};
    bars.areas.push_back({{0, kStatusBar, state.width, kNavigationBar}, page.title, NoTarget{}});
    bars.areas.push_back({back, "Back", leadTo(page.back)});
    bars.shapes.push_back(
        GlyphShape{{back.x + 2, back.y + 11, 22, 22}, findGlyph("back"), colors.tint});
    const std::string& label =
        previous->kind == PageKind::home || previous->title.empty() ? "Back" : previous->title;
    bars.shapes.push_back(TextShape{{back.x + 24, back.y, back.width - 24, kNavigationBar},
                                    label,
                                    {.size = 17, .color = colors.tint}});
    bars.shapes.push_back(
        TextShape{{state.width * 0.31, kStatusBar, state.width * 0.38, kNavigationBar},
                  page.title,
                  {.size = 17,
                   .weight = Weight::semibold,
                   .color = colors.label,
                   .align = TextStyle::Align::center}});
}

DisplayList layOutList(const Scenario& scenario, const Page& page, const LayoutState& state,
                       Fonts& fonts) {
    const Theme& colors = theme(state.appearance);
    DisplayList list;
    list.background = page.kind == PageKind::article ? colors.page : colors.grouped;
    const bool largeTitle = page.back.empty() && !page.title.empty();
    PageBuilder builder(state, fonts, kStatusBar + (page.back.empty() ? 20 : kNavigationBar + 14));
    if (largeTitle) builder.add(page.title);
    for (const Item& item : page.items) builder.add(item);
    list.contentHeight = builder.bottom() + kHomeIndicator;
    list.content = builder.take();
    addNavigationBar(list.bars, scenario, page, state, list.background);
    addHomeIndicator(list.bars, state, colors.label);
    return list;
}

// The page underneath, dimmed and out of reach, and a card over it from the bottom up.
DisplayList layOutSheet(const Scenario& scenario, const Page& page, const LayoutState& state,
                        Fonts& fonts) {
    const Theme& colors = theme(state.appearance);
    DisplayList list = layOutPage(scenario, *scenario.find(page.over), state, fonts);
    const Rect screen{0, 0, state.width, state.height};
    list.contentHeight = 0;
    list.bars.shapes.push_back(BoxShape{screen, 0, rgb(0x000000, 0.45)});
    list.bars.areas.push_back({screen, "", NoTarget{}});
    PageBuilder builder(state, fonts, 22);
    if (!page.title.empty()) {
        builder.add(Item(TextItem{.text = page.title, .kind = TextKind::headline}));
    }
    for (const Item& item : page.items) builder.add(item);
    const double height = builder.bottom() + kHomeIndicator;
    list.bars.shapes.push_back(
        BoxShape{{0, state.height - height, state.width, height + 40},
                 28,
                 state.appearance == Appearance::light ? colors.grouped : colors.card});
    list.bars.append(builder.take(), state.height - height);
    addHomeIndicator(list.bars, state, colors.label);
    return list;
}

}  // namespace

DisplayList layOutPage(const Scenario& scenario, const Page& page, const LayoutState& state,
                       Fonts& fonts) {
    switch (page.kind) {
        case PageKind::home:
            return layOutHome(scenario.phone, page, state, fonts);
        case PageKind::sheet:
            return layOutSheet(scenario, page, state, fonts);
        case PageKind::list:
        case PageKind::article:
            break;
    }
    return layOutList(scenario, page, state, fonts);
}

}  // namespace tandrel
