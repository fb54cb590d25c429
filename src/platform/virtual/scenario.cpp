#include "platform/virtual/scenario.h"

#include <algorithm>
#include <set>

#include "base/file.h"
#include "platform/virtual/json_place.h"
#include "platform/virtual/scenario_items.h"

namespace tandrel {
namespace {

constexpr std::size_t kMostPages = 500;
constexpr std::size_t kLongestName = 100;
constexpr int kSmallestSide = 300;
constexpr int kLargestSide = 4000;

template <typename Value>
using Names = std::pair<std::string_view, Value>;

constexpr Names<KeyboardLayout> kKeyboards[] = {{"us", KeyboardLayout::us},
                                                {"german", KeyboardLayout::german},
                                                {"russian", KeyboardLayout::russian}};
constexpr Names<Appearance> kAppearances[] = {{"light", Appearance::light},
                                              {"dark", Appearance::dark}};
constexpr Names<ScreenPower> kPowers[] = {{"awake", ScreenPower::awake},
                                          {"locked", ScreenPower::locked},
                                          {"asleep", ScreenPower::asleep}};
constexpr Names<PageKind> kPageKinds[] = {{"home", PageKind::home},
                                          {"list", PageKind::list},
                                          {"article", PageKind::article},
                                          {"sheet", PageKind::sheet}};

template <typename Value, std::size_t count>
Result<void> readChoice(const JsonPlace& from, std::string_view member, Value& into,
                        const Names<Value> (&names)[count]) {
    if (const auto place = from.find(member)) {
        into = TRY(place->choice(std::span<const Names<Value>>(names)));
    }
    return {};
}

Result<void> readTruth(const JsonPlace& from, std::string_view member, bool& into) {
    if (const auto place = from.find(member)) into = TRY(place->truth());
    return {};
}

Result<std::string> readName(const JsonPlace& place) {
    auto name = TRY(place.text(kLongestName));
    if (name.empty() || name.contains('\n')) return place.error("must be one line of text");
    return name;
}

Result<std::string> memberName(const JsonPlace& from, std::string_view member) {
    const auto place = TRY(from.member(member));
    return readName(place);
}

Result<void> readSwitches(const JsonPlace& from, PhoneTraits& phone) {
    TRY_VOID(readTruth(from, "passcode", phone.passcode));
    TRY_VOID(readTruth(from, "assistiveTouch", phone.assistiveTouch));
    TRY_VOID(readTruth(from, "paired", phone.paired));
    TRY_VOID(readTruth(from, "plugged", phone.plugged));
    TRY_VOID(readTruth(from, "mirroring", phone.mirroring));
    TRY_VOID(readTruth(from, "staleCache", phone.staleCache));
    return {};
}

Result<void> readScreen(const JsonPlace& from, PhoneTraits& phone) {
    const auto width = TRY(from.member("width"));
    phone.width = TRY(width.wholeNumber(kSmallestSide, kLargestSide));
    const auto height = TRY(from.member("height"));
    phone.height = TRY(height.wholeNumber(kSmallestSide, kLargestSide));
    if (const auto scale = from.find("scale")) phone.scale = TRY(scale->number(1, 4));
    TRY_VOID(readChoice(from, "appearance", phone.appearance, kAppearances));
    TRY_VOID(readChoice(from, "screen", phone.screen, kPowers));
    return {};
}

Result<PhoneTraits> readPhone(const JsonPlace& from) {
    TRY_VOID(from.object({"id", "name", "host", "width", "height", "scale", "keyboard",
                          "appearance", "screen", "passcode", "assistiveTouch", "paired", "plugged",
                          "mirroring", "staleCache", "clock", "date"}));
    PhoneTraits phone;
    phone.id = TRY(memberName(from, "id"));
    phone.name = TRY(memberName(from, "name"));
    const auto host = TRY(from.member("host"));
    const auto hostText = TRY(host.text(kLongestName));
    const auto uuid = Uuid::parse(hostText);
    if (!uuid) return host.error("must be a UUID");
    phone.host = *uuid;
    TRY_VOID(readChoice(from, "keyboard", phone.keyboard, kKeyboards));
    TRY_VOID(readScreen(from, phone));
    TRY_VOID(readSwitches(from, phone));
    phone.clock = from.find("clock") ? TRY(memberName(from, "clock")) : "9:41";
    phone.date = from.find("date")   ? TRY(memberName(from, "date")) : "Tuesday, January 9";
    return phone;
}

Result<LaterAction> readLater(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(from.object({"seconds", "do"}));
    const auto seconds = TRY(from.member("seconds"));
    const auto action = TRY(from.member("do"));
    LaterAction later;
    later.seconds = TRY(seconds.number(0, kLongestWait));
    later.action = TRY(readAction(action, names));
    return later;
}

Result<Page> readPage(const JsonPlace& from, const PageNames& names) {
    TRY_VOID(
        from.object({"name", "kind", "title", "back", "over", "sideButton", "later", "items"}));
    Page page;
    page.name = TRY(memberName(from, "name"));
    TRY_VOID(readChoice(from, "kind", page.kind, kPageKinds));
    if (const auto title = from.find("title")) page.title = TRY(readName(*title));
    if (const auto back = from.find("back")) page.back = TRY(readPageName(*back, names));
    if (page.kind == PageKind::sheet) {
        const auto over = TRY(from.member("over"));
        page.over = TRY(readPageName(over, names));
        if (page.over == page.name) return over.error("must be another page");
    } else if (const auto over = from.find("over")) {
        return over->error("is for a page of kind \"sheet\" only");
    }
    if (const auto action = from.find("sideButton")) {
        page.sideButton = TRY(readAction(*action, names));
    }
    if (const auto later = from.find("later")) page.later = TRY(readLater(*later, names));
    const auto items = TRY(from.member("items"));
    page.items = TRY(readItems(items, names));
    return page;
}

// Every page's name, read before the pages themselves so that they can lead to later ones.
Result<PageNames> readPageNames(const std::vector<JsonPlace>& pages) {
    PageNames names;
    for (const auto& page : pages) {
        auto name = TRY(memberName(page, "name"));
        if (!names.insert(std::move(name)).second) {
            const auto place = TRY(page.member("name"));
            return place.error("is the name of an earlier page already");
        }
    }
    return names;
}

}  // namespace

const Page* Scenario::find(std::string_view page) const {
    const auto found = std::ranges::find(pages, page, &Page::name);
    return found == pages.end() ? nullptr : &*found;
}

std::map<std::string, bool, std::less<>> Scenario::switches() const {
    std::map<std::string, bool, std::less<>> switches;
    switches.emplace(kAssistiveTouchSwitch, phone.assistiveTouch);
    switches.emplace(kDarkModeSwitch, phone.appearance == Appearance::dark);
    for (const Page& page : pages) {
        for (const Item& item : page.items) {
            const auto* rows = std::get_if<RowsItem>(&item);
            if (rows == nullptr) continue;
            for (const Row& row : rows->rows) {
                if (!row.toggle.empty()) switches.emplace(row.toggle, row.on);
            }
        }
    }
    return switches;
}

const FieldItem* Page::findField(std::string_view field) const {
    for (const Item& item : items) {
        const auto* found = std::get_if<FieldItem>(&item);
        if (found != nullptr && found->name == field) return found;
    }
    return nullptr;
}

Result<Scenario> parseScenario(std::string_view text, const std::string& file) {
    if (text.size() > kLargestScenario) {
        return fail(file + ": a scenario has at most " + std::to_string(kLargestScenario) +
                    " bytes");
    }
    const auto json = parseJson(text);
    if (!json) return fail(file + ": " + json.error().message);
    const JsonPlace root(*json, file);
    TRY_VOID(root.object({"phone", "home", "start", "pages"}));
    Scenario scenario;
    const auto phone = TRY(root.member("phone"));
    scenario.phone = TRY(readPhone(phone));
    const auto pageList = TRY(root.member("pages"));
    const auto pages = TRY(pageList.list(kMostPages));
    const auto names = TRY(readPageNames(pages));
    for (const auto& page : pages) scenario.pages.push_back(TRY(readPage(page, names)));
    for (std::size_t i = 0; i < pages.size(); ++i) {
        if (scenario.pages[i].kind != PageKind::sheet) continue;
        if (scenario.find(scenario.pages[i].over)->kind != PageKind::sheet) continue;
        return pages[i].find("over")->error("must not be a sheet itself");
    }
    const auto home = TRY(root.member("home"));
    scenario.home = TRY(readPageName(home, names));
    const auto start = root.find("start");
    scenario.start = start ? TRY(readPageName(*start, names)) : scenario.home;
    return scenario;
}

Result<Scenario> loadScenario(const std::filesystem::path& file) {
    const auto text = readFile(file, kLargestScenario);
    if (!text) return fail(text.error().message);
    return parseScenario(*text, file.string());
}

}  // namespace tandrel
