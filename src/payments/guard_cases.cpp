#include "payments/guard_cases.h"

#include <fmt/format.h>

#include "base/file.h"
#include "base/json.h"
#include "payments/guard_fixtures.h"

namespace tandrel::PaymentGuard {
namespace {

constexpr std::size_t kMostRows = 60;

Result<std::vector<std::string>> rowsOf(const Json& list) {
    if (!list.is_array() || list.empty() || list.size() > kMostRows)
        return fail(fmt::format("\"screen\" is not a list of 1 to {} rows", kMostRows));
    std::vector<std::string> rows;
    for (const Json& row : list) {
        if (!row.is_string() || row.get_ref<const std::string&>().size() > kLongestFixtureText)
            return fail("\"screen\" has a row that is no text, or too long");
        rows.push_back(row);
    }
    return rows;
}

Result<JudgedScreen> writtenCase(const Json& entry, CaseReader& reader, std::size_t& drawn) {
    const auto screen = parseWrittenScreen(TRY(rowsOf(entry.at("screen"))));
    const auto action = TRY(parseWrittenAction(textMember(entry, "action").value_or(""), screen));
    if (!boolMember(entry, "drawn").value_or(false)) return layOut(screen, action);
    ++drawn;
    return reader.draw(screen, action);
}

Result<JudgedScreen> picturedCase(const Json& entry, const std::filesystem::path& folder,
                                  CaseReader& reader, std::size_t& drawn) {
    const auto picture = textMember(entry, "picture");
    if (!picture) return fail("\"picture\" is not a text");
    const Json action = entry.value("action", Json::object());
    const auto known = kind(textMember(action, "kind").value_or("tap"));
    if (!known) return fail("\"action\" has an unknown kind");
    ++drawn;
    return reader.read(folder / *picture, {.kind = *known,
                                           .x = numberMember(action, "x"),
                                           .y = numberMember(action, "y"),
                                           .x2 = numberMember(action, "x2"),
                                           .y2 = numberMember(action, "y2"),
                                           .text = textMember(action, "text")});
}

// What is right; none when the case does not say.
std::optional<bool> asksOf(const Json& entry, const std::optional<Fixture>& recorded) {
    if (const auto said = boolMember(entry, "asks")) return said;
    if (!recorded || !recorded->expect.verdict) return std::nullopt;
    return recorded->expect.verdict->has_value();
}

Result<std::optional<GuardCase>> readCase(const Json& entry, const std::filesystem::path& file,
                                          CaseReader& reader, std::size_t& drawn) {
    if (!entry.is_object()) return fail("it is not an object");
    GuardCase result;
    std::optional<Fixture> recorded;
    if (entry.contains("screen")) {
        result.screen = TRY(writtenCase(entry, reader, drawn));
    } else if (entry.contains("picture")) {
        result.screen = TRY(picturedCase(entry, file.parent_path(), reader, drawn));
    } else {
        recorded = TRY(parseFixture(entry, "the case"));
        result.screen = {recorded->frame, recorded->lines, recorded->action};
    }
    const auto asks = asksOf(entry, recorded);
    if (!asks) return std::nullopt;
    result.name = textMember(entry, "name").value_or("");
    result.category = textMember(entry, "category").value_or(file.stem().string());
    result.language = textMember(entry, "language").value_or("");
    result.asks = *asks;
    return result;
}

}  // namespace

Result<GuardCases> readCases(const std::filesystem::path& file, CaseReader& reader) {
    const std::string content = TRY(readFile(file, kLargestFixtureFile));
    const Json json = TRY(parseJson(content));
    const auto list = json.is_object() ? json.find("cases") : json.end();
    if (list == json.end() || !list->is_array() || list->empty() || list->size() > kMostFixtures)
        return fail(fmt::format("it has no list \"cases\" of 1 to {} cases", kMostFixtures));
    GuardCases all;
    for (std::size_t i = 0; i < list->size(); ++i) {
        auto one = readCase((*list)[i], file, reader, all.drawn);
        if (!one) return fail(fmt::format("cases[{}]: {}", i, one.error().message));
        if (*one) {
            all.cases.push_back(std::move(**one));
        } else {
            ++all.unknown;
        }
    }
    return all;
}

}  // namespace tandrel::PaymentGuard
