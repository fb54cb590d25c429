#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "platform/text_recognizer.h"

// The command-line tools for looking at a phone's screen without the application.
namespace tandrel {

// What the tools need from outside.
struct MirrorServices {
    std::ostream& out;  // the result, and nothing else
    std::ostream& err;  // everything meant for a person
    // Called by the tools that read text, at most once.
    std::function<Result<std::unique_ptr<TextRecognizer>>()> makeRecognizer;
};

// Runs the tool that `args[0]` names and returns its exit status, 0 for success; none when no tool
// has that name. A failure is one line on `err`.
std::optional<int> mirrorCommand(const std::vector<std::string>& args, MirrorServices& services);

// The argument that follows the first `name` among `args`.
std::optional<std::string> option(const std::vector<std::string>& args, std::string_view name);

}  // namespace tandrel
