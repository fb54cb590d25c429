#include "screen/mirror_command.h"

#include <algorithm>
#include <array>
#include <ostream>

#include "image/image_reader.h"
#include "screen/content_rect.h"
#include "screen/recognize.h"

namespace tandrel {
namespace {

using Args = std::vector<std::string>;

struct MirrorTool {
    std::string_view name;
    std::size_t operands;  // that must follow the name
    std::string_view usage;
    // The tool's result, or the sentence that says why there is none.
    Result<Json> (*run)(const Args& args, MirrorServices& services);
};

// The picture named by the argument after the tool's name, which `mirrorCommand` has made sure of.
Result<PixelBuffer> operandImage(const Args& args) {
    auto image = readImage(args[1]);
    if (!image) return fail("cannot read " + args[1]);
    return image;
}

Result<Json> ocr(const Args& args, MirrorServices& services) {
    const PixelBuffer image = TRY(operandImage(args));
    const auto recognizer = TRY(services.makeRecognizer());
    const ReadText text = TRY(readText(*recognizer, image));
    Json records = Json::array();
    for (const TextRecord& record : text.records) records.push_back(toJson(record));
    return records;
}

Result<Json> detectRect(const Args& args, MirrorServices&) {
    const PixelBuffer image = TRY(operandImage(args));
    return withPixels(image, [&](const Pixels& pixels) {
        return detectContent(pixels, parseAspect(option(args, "--aspect")),
                             option(args, "--prefer"))
            .json();
    });
}

// clang-format off
constexpr std::array kTools{
    //         name           operands  usage                                                                       run
    MirrorTool{"ocr",         1,        "usage: ocr <image>",                                                       ocr},
    MirrorTool{"detect-rect", 1,        "usage: detect-rect <image> [--aspect W/H] [--prefer portrait|landscape]",  detectRect},
};
// clang-format on

bool hasOperands(const Args& args, std::size_t count) {
    if (args.size() <= count) return false;
    return std::none_of(args.begin() + 1, args.begin() + 1 + static_cast<std::ptrdiff_t>(count),
                        [](const std::string& arg) { return arg.starts_with("--"); });
}

int failWith(std::string_view message, MirrorServices& services) {
    services.err << message << '\n';
    return 1;
}

}  // namespace

std::optional<std::string> option(const Args& args, std::string_view name) {
    const auto found = std::ranges::find(args, name);
    if (found == args.end() || found + 1 == args.end()) return std::nullopt;
    return *(found + 1);
}

std::optional<int> mirrorCommand(const Args& args, MirrorServices& services) {
    if (args.empty()) return std::nullopt;
    const auto tool = std::ranges::find(kTools, args[0], &MirrorTool::name);
    if (tool == kTools.end()) return std::nullopt;
    if (args.size() > 1 && args[1] == "--help") {
        services.out << tool->usage << '\n';
        return 0;
    }
    if (!hasOperands(args, tool->operands)) return failWith(tool->usage, services);
    const auto result = tool->run(args, services);
    if (!result) return failWith(result.error().message, services);
    services.out << dumpJson(*result) << std::endl;
    return services.out ? 0 : failWith("cannot write the result", services);
}

}  // namespace tandrel
