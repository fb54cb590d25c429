#include "app/status_helper_check.h"

#include <charconv>

#include <fmt/format.h>

#include "base/file.h"
#include "base/json.h"
#include "base/log.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr const char* kRanKey = "helperRan";
constexpr const char* kQuarantine = "com.apple.quarantine";
constexpr std::uint64_t kApprovedByOwner = 0x40;

}  // namespace

HelperCheck::State HelperCheck::state() const {
    if (!isExecutableFile(path())) return {State::Kind::missing, {}};
    if (to_.defaults.textValue(kRanKey) == marker()) return {State::Kind::ready, {}};
    return {needsApproval(quarantineFlags(info_.bundle)) ? State::Kind::needsApproval
                                                         : State::Kind::ready,
            {}};
}

HelperCheck::State HelperCheck::run(Duration timeout, std::stop_token stop) const {
    if (!isExecutableFile(path())) return {State::Kind::missing, {}};
    const auto end = to_.processes.run({.program = path(),
                                        .arguments = {"--version"},
                                        .timeout = timeout,
                                        .stop = std::move(stop)});
    if (!end) return {State::Kind::failed, end.error().message};
    if (end->how == ProgramEnd::How::timedOut) {
        log(fmt::format("helper check: no answer in {} s (held by macOS)",
                        std::chrono::floor<std::chrono::seconds>(timeout).count()));
        return {State::Kind::blocked, {}};
    }
    const bool succeeded = end->how == ProgramEnd::How::exited && end->status == 0;
    if (succeeded && end->output.starts_with("tandrel")) {
        if (const auto kept = to_.defaults.set(kRanKey, marker()); !kept) log(kept.error().message);
        return {State::Kind::ready, {}};
    }
    const std::string output = trimmed(end->output);
    return {State::Kind::failed, output.empty() ? fmt::format("exit {}", end->status) : output};
}

std::optional<std::uint64_t> HelperCheck::parseFlags(std::string_view text) {
    text = text.substr(0, text.find(';'));
    std::uint64_t flags = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), flags, 16);
    const bool whole = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return whole ? std::optional(flags) : std::nullopt;
}

std::optional<std::uint64_t> HelperCheck::quarantineFlags(const std::filesystem::path& file) const {
    const auto text = to_.attributes.text(file, kQuarantine);
    return text ? parseFlags(*text) : std::nullopt;
}

bool HelperCheck::needsApproval(std::optional<std::uint64_t> bundleFlags) {
    return bundleFlags && (*bundleFlags & kApprovedByOwner) == 0;
}

std::string describe(const HelperCheck::State& state) {
    using enum HelperCheck::State::Kind;
    switch (state.kind) {
        case failed:
            return "failed(" + dumpJson(state.text) + ")";
        case ready:
            return "ready";
        case needsApproval:
            return "needsApproval";
        case blocked:
            return "blocked";
        case missing:
            return "missing";
    }
    return "missing";
}

}  // namespace tandrel
