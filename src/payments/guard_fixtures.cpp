#include "payments/guard_fixtures.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "base/file.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr std::string_view kWhole = "the file";

// A value of the file and where it stands, such as cases[3].lines[0].x.
struct FixturePlace {
    const Json& value;
    std::string where;

    std::unexpected<Error> isNot(std::string_view what) const {
        return fail(fmt::format("{} is not {}", where, what));
    }
    // The member of an object; none when it is missing.
    Result<std::optional<FixturePlace>> find(const char* key) const {
        if (!value.is_object()) return isNot("an object");
        const auto found = value.find(key);
        if (found == value.end()) return std::nullopt;
        return FixturePlace{*found, where == kWhole ? key : where + "." + key};
    }
    Result<FixturePlace> at(const char* key) const {
        auto member = TRY(find(key));
        if (!member) return fail(fmt::format("{} has no \"{}\"", where, key));
        return std::move(*member);
    }
    FixturePlace item(std::size_t index) const {
        return {value[index], fmt::format("{}[{}]", where, index)};
    }

    Result<std::string> text() const {
        if (!value.is_string()) return isNot("a text");
        if (value.get_ref<const std::string&>().size() > kLongestFixtureText) {
            return fail(fmt::format("{} is longer than {} bytes", where, kLongestFixtureText));
        }
        return value.get<std::string>();
    }
    Result<double> number() const {
        if (!value.is_number()) return isNot("a number");
        return value.get<double>();
    }
    Result<bool> boolean() const {
        if (!value.is_boolean()) return isNot("true or false");
        return value.get<bool>();
    }
    Result<std::size_t> listLength(std::size_t most) const {
        if (!value.is_array()) return isNot("a list");
        if (value.size() > most)
            return fail(fmt::format("{} has more than {} entries", where, most));
        return value.size();
    }
};

Result<double> numberAt(const FixturePlace& object, const char* key) {
    return TRY(object.at(key))
    .number();
}

Result<std::string> textAt(const FixturePlace& object, const char* key) {
    return TRY(object.at(key))
    .text();
}

Result<std::optional<double>> optionalNumber(const FixturePlace& object, const char* key) {
    const auto member = TRY(object.find(key));
    if (!member) return std::nullopt;
    return TRY(member->number());
}

Result<std::optional<std::string>> optionalText(const FixturePlace& object, const char* key) {
    const auto member = TRY(object.find(key));
    if (!member) return std::nullopt;
    return TRY(member->text());
}

Result<std::vector<Line>> readLines(const FixturePlace& list) {
    const std::size_t count = TRY(list.listLength(kMostFixtureLines));
    for (std::size_t i = 0; i < count; ++i) {
        const FixturePlace record = list.item(i);
        TRY_VOID(textAt(record, "text"));
        for (const char* key : {"x", "y", "w", "h"}) TRY_VOID(numberAt(record, key));
        TRY_VOID(optionalNumber(record, "conf"));
    }
    return lines(list.value);
}

Result<Action> readAction(const FixturePlace& place) {
    const FixturePlace name = TRY(place.at("kind"));
    const std::string text = TRY(name.text());
    const auto known = kind(text);
    if (!known) return name.isNot("\"tap\", \"swipe\", \"enter\" or \"type\"");
    Action action;
    action.kind = *known;
    action.x = TRY(optionalNumber(place, "x"));
    action.y = TRY(optionalNumber(place, "y"));
    action.x2 = TRY(optionalNumber(place, "x2"));
    action.y2 = TRY(optionalNumber(place, "y2"));
    action.text = TRY(optionalText(place, "text"));
    return action;
}

Result<Fixture::Expectation> readExpectation(const FixturePlace& place) {
    constexpr std::array<std::string_view, 4> kKnown = {"paymentScreen", "verdict", "title",
                                                        "summary"};
    if (!place.value.is_object()) return place.isNot("an object");
    // A misspelt member would be a check that never fails.
    for (const auto& [key, value] : place.value.items()) {
        if (std::ranges::find(kKnown, key) == kKnown.end()) {
            return fail(fmt::format("{} has a member \"{}\", which nothing checks", place.where,
                                    key.substr(0, kLongestFixtureText)));
        }
    }
    Fixture::Expectation expect;
    if (const auto member = TRY(place.find("paymentScreen"))) {
        expect.paymentScreen = TRY(member->boolean());
    }
    if (const auto member = TRY(place.find("verdict"))) {
        expect.verdict.emplace();
        if (!member->value.is_null()) *expect.verdict = TRY(member->text());
    }
    expect.title = TRY(optionalText(place, "title"));
    expect.summary = TRY(optionalText(place, "summary"));
    return expect;
}

Result<Fixture> readFixture(const FixturePlace& place) {
    const FixturePlace frame = TRY(place.at("frame"));
    const FixturePlace list = TRY(place.at("lines"));
    const FixturePlace action = TRY(place.at("action"));
    const FixturePlace expect = TRY(place.at("expect"));
    Fixture fixture;
    fixture.name = TRY(textAt(place, "name"));
    fixture.frame.width = TRY(numberAt(frame, "w"));
    fixture.frame.height = TRY(numberAt(frame, "h"));
    fixture.lines = TRY(readLines(list));
    fixture.action = TRY(readAction(action));
    fixture.expect = TRY(readExpectation(expect));
    return fixture;
}

}  // namespace

Result<Fixture> parseFixture(const Json& value, std::string where) {
    const FixturePlace place{value, std::move(where)};
    return readFixture(place);
}

Result<std::vector<Fixture>> parseFixtures(std::string_view text) {
    const Json json = TRY(parseJson(text));
    const FixturePlace list = TRY((FixturePlace{json, std::string(kWhole)}.at("cases")));
    const std::size_t count = TRY(list.listLength(kMostFixtures));
    if (count == 0) return fail("the file has no cases");
    std::vector<Fixture> fixtures;
    fixtures.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const FixturePlace place = list.item(i);
        fixtures.push_back(TRY(readFixture(place)));
    }
    return fixtures;
}

Result<std::vector<Fixture>> readFixtures(const std::filesystem::path& path) {
    const std::string content = TRY(readFile(path, kLargestFixtureFile));
    return parseFixtures(content);
}

}  // namespace tandrel::PaymentGuard
