#include "screen/mirror_args.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

namespace tandrel {

std::optional<std::string> option(const MirrorArgs& args, std::string_view name) {
    const auto found = std::ranges::find(args, name);
    if (found == args.end() || found + 1 == args.end()) return std::nullopt;
    return *(found + 1);
}

bool hasFlag(const MirrorArgs& args, std::string_view name) {
    return std::ranges::find(args, name) != args.end();
}

std::optional<double> parseNumber(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

Result<double> numberOption(const MirrorArgs& args, std::string_view name, double fallback,
                            double least, double most) {
    if (!hasFlag(args, name)) return fallback;
    const auto value = parseNumber(option(args, name).value_or(""));
    if (value && *value >= least && *value <= most) return *value;
    return fail(fmt::format("{} takes a number from {} to {}", name, least, most));
}

Result<std::optional<std::uint32_t>> windowOption(const MirrorArgs& args) {
    if (!hasFlag(args, "--window")) return std::nullopt;
    const double id = TRY(numberOption(args, "--window", 0, 0, 4294967295.0));
    return static_cast<std::uint32_t>(id);
}

}  // namespace tandrel
