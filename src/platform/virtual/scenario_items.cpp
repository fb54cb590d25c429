#include "platform/virtual/scenario_items.h"

#include <charconv>

namespace tandrel {
namespace {

constexpr std::size_t kLongestText = 4000;  // bytes
constexpr std::size_t kMostItems = 500;     // a page, and parts an item
constexpr double kTallest = 2000;           // points

template <typename Value>
using Name = std::pair<std::string_view, Value>;

constexpr Name<Trouble> kTroubles[] = {{"vanish", Trouble::vanish},
                                       {"unplug", Trouble::unplug},
                                       {"disconnectBluetooth", Trouble::disconnectBluetooth},
                                       {"stopMirroring", Trouble::stopMirroring},
                                       {"freeze", Trouble::freeze},
                                       {"goBlack", Trouble::goBlack},
                                       {"lock", Trouble::lock},
                                       {"sleep", Trouble::sleep}};
constexpr Name<IconPlace> kIconPlaces[] = {{"grid", IconPlace::grid}, {"dock", IconPlace::dock}};
constexpr Name<TextKind> kTextKinds[] = {{"body", TextKind::body},
                                         {"title", TextKind::title},
                                         {"headline", TextKind::headline},
                                         {"caption", TextKind::caption},
                                         {"amount", TextKind::amount}};
constexpr Name<TextAlign> kAligns[] = {{"left", TextAlign::left}, {"center", TextAlign::center}};
constexpr Name<ButtonKind> kButtonKinds[] = {
    {"filled", ButtonKind::filled}, {"tinted", ButtonKind::tinted}, {"plain", ButtonKind::plain}};
constexpr Name<FieldKind> kFieldKinds[] = {{"line", FieldKind::line}, {"area", FieldKind::area}};

// Reads the optional members of one object, each into its place.
class Members {
 public:
    Members(const JsonPlace& from, const PageNames& names) : from_(from), names_(names) {}

    Result<void> text(std::string_view member, std::string& into) const {
        if (const auto place = from_.find(member)) into = TRY(place->text(kLongestText));
        return {};
    }
    Result<void> needText(std::string_view member, std::string& into) const {
        const auto place = TRY(from_.member(member));
        into = TRY(place.text(kLongestText));
        return {};
    }
    Result<void> height(double& into) const {
        const auto place = TRY(from_.member("height"));
        into = TRY(place.number(1, kTallest));
        return {};
    }
    Result<void> truth(std::string_view member, bool& into) const {
        if (const auto place = from_.find(member)) into = TRY(place->truth());
        return {};
    }
    template <typename Value, std::size_t count>
    Result<void> choice(std::string_view member, Value& into,
                        const Name<Value> (&names)[count]) const {
        if (const auto place = from_.find(member)) {
            into = TRY(place->choice(std::span<const Name<Value>>(names)));
        }
        return {};
    }
    Result<void> action(std::string_view member, Action& into) const {
        const auto place = TRY(from_.member(member));
        into = TRY(readAction(place, names_));
        return {};
    }
    Result<void> action(std::string_view member, std::optional<Action>& into) const {
        if (const auto place = from_.find(member)) into = TRY(readAction(*place, names_));
        return {};
    }
    Result<void> glyph(const Glyph*& into) const {
        const auto place = from_.find("glyph");
        if (!place) return {};
        const auto name = TRY(place->text(kLongestText));
        into = findGlyph(name);
        if (into == nullptr) return place->error("is not a glyph that there is");
        return {};
    }
    // "#RRGGBB"
    Result<void> color(Color& into) const {
        const auto place = from_.find("color");
        if (!place) return {};
        const auto text = TRY(place->text(kLongestText));
        unsigned value = 0;
        const char* end = text.data() + text.size();
        const bool shaped = text.size() == 7 && text.front() == '#';
        const auto read = std::from_chars(text.data() + (shaped ? 1 : 0), end, value, 16);
        if (!shaped || read.ec != std::errc{} || read.ptr != end) {
            return place->error("must be a color such as \"#0A84FF\"");
        }
        into = rgb(value);
        return {};
    }

 private:
    const JsonPlace& from_;
    const PageNames& names_;
};

Result<Icon> readIcon(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"label", "color", "glyph", "tap"}));
    const Members members(from, names);
    Icon icon{.label = {}, .color = rgb(0x8E8E93), .glyph = nullptr, .tap = {}};
    TRY_VOID(members.needText("label", icon.label));
    TRY_VOID(members.color(icon.color));
    TRY_VOID(members.glyph(icon.glyph));
    TRY_VOID(members.action("tap", icon.tap));
    return icon;
}

Result<Item> readIcons(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "place", "icons"}));
    const Members members(from, names);
    IconsItem item;
    TRY_VOID(members.choice("place", item.place, kIconPlaces));
    const auto list = TRY(from.member("icons"));
    const auto places = TRY(list.list(kMostItems));
    for (const auto& place : places) item.icons.push_back(TRY(readIcon(place, names)));
    return item;
}

Result<Row> readRow(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"text", "detail", "color", "glyph", "toggle", "on", "tap"}));
    const Members members(from, names);
    Row row;
    row.color = rgb(0x8E8E93);
    TRY_VOID(members.needText("text", row.text));
    TRY_VOID(members.text("detail", row.detail));
    TRY_VOID(members.color(row.color));
    TRY_VOID(members.glyph(row.glyph));
    TRY_VOID(members.text("toggle", row.toggle));
    TRY_VOID(members.truth("on", row.on));
    TRY_VOID(members.action("tap", row.tap));
    return row;
}

Result<Item> readRows(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "header", "footer", "rows"}));
    const Members members(from, names);
    RowsItem item;
    TRY_VOID(members.text("header", item.header));
    TRY_VOID(members.text("footer", item.footer));
    const auto list = TRY(from.member("rows"));
    const auto places = TRY(list.list(kMostItems));
    for (const auto& place : places) item.rows.push_back(TRY(readRow(place, names)));
    return item;
}

Result<Item> readText(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "text", "style", "align"}));
    const Members members(from, names);
    TextItem item;
    TRY_VOID(members.needText("text", item.text));
    TRY_VOID(members.choice("style", item.kind, kTextKinds));
    TRY_VOID(members.choice("align", item.align, kAligns));
    return item;
}

Result<Item> readButton(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "text", "style", "tap"}));
    const Members members(from, names);
    ButtonItem item;
    TRY_VOID(members.needText("text", item.text));
    TRY_VOID(members.choice("style", item.kind, kButtonKinds));
    TRY_VOID(members.action("tap", item.tap));
    return item;
}

Result<Item> readField(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "name", "placeholder", "text", "style", "focused", "submit"}));
    const Members members(from, names);
    FieldItem item;
    TRY_VOID(members.needText("name", item.name));
    TRY_VOID(members.text("placeholder", item.placeholder));
    TRY_VOID(members.text("text", item.text));
    TRY_VOID(members.choice("style", item.kind, kFieldKinds));
    TRY_VOID(members.truth("focused", item.focused));
    TRY_VOID(members.action("submit", item.submit));
    return item;
}

Result<Item> readImage(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "height", "color", "glyph"}));
    const Members members(from, names);
    ImageItem item;
    item.color = rgb(0x5E8BBE);
    TRY_VOID(members.height(item.height));
    TRY_VOID(members.color(item.color));
    TRY_VOID(members.glyph(item.glyph));
    return item;
}

Result<Item> readSlide(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "text", "done"}));
    const Members members(from, names);
    SlideItem item;
    TRY_VOID(members.needText("text", item.text));
    TRY_VOID(members.action("done", item.done));
    return item;
}

Result<Item> readSpace(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"kind", "height"}));
    SpaceItem item;
    TRY_VOID(Members(from, names).height(item.height));
    return item;
}

using ReadItem = Result<Item> (*)(const JsonPlace&, const PageNames&);
constexpr Name<ReadItem> kItemKinds[] = {
    {"icons", readIcons}, {"rows", readRows},   {"text", readText},   {"button", readButton},
    {"field", readField}, {"image", readImage}, {"slide", readSlide}, {"space", readSpace}};

}  // namespace

Result<std::string> readPageName(const JsonPlace& from, const PageNames& names) {
    auto name = TRY(from.text(kLongestText));
    if (!names.contains(name)) return from.error("must be the name of a page");
    return name;
}

Result<Action> readAction(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"go", "count", "trouble", "seconds"}));
    const Members members(from, names);
    Action action;
    if (const auto place = from.find("go")) action.go = TRY(readPageName(*place, names));
    TRY_VOID(members.text("count", action.count));
    TRY_VOID(members.choice("trouble", action.trouble, kTroubles));
    if (const auto place = from.find("seconds")) {
        action.seconds = TRY(place->number(0, kLongestWait));
    }
    return action;
}

Result<std::vector<Item>> readItems(const JsonPlace& from, const PageNames& names) {
    const auto places = TRY(from.list(kMostItems));
    std::vector<Item> items;
    for (const auto& place : places) {
        const auto kind = TRY(place.member("kind"));
        const auto read = TRY(kind.choice(std::span<const Name<ReadItem>>(kItemKinds)));
        items.push_back(TRY(read(place, names)));
    }
    return items;
}

}  // namespace tandrel
