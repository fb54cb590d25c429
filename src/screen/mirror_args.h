#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

// Reading the arguments of the command-line tools; the first is the tool's name.
namespace tandrel {

using MirrorArgs = std::vector<std::string>;

// The argument that follows the first `name` among `args`.
std::optional<std::string> option(const MirrorArgs& args, std::string_view name);
bool hasFlag(const MirrorArgs& args, std::string_view name);

// The option's value as a number from `least` to `most`, `fallback` without the option. The error
// names the option.
Result<double> numberOption(const MirrorArgs& args, std::string_view name, double fallback,
                            double least, double most);
// The window's number after "--window", if that is there.
Result<std::optional<std::uint32_t>> windowOption(const MirrorArgs& args);
// The whole text as a finite number.
std::optional<double> parseNumber(std::string_view text);

}  // namespace tandrel
