#include "screen/mirror_command.h"

#include <algorithm>
#include <array>
#include <ostream>

#include <fmt/format.h>

#include "screen/mirror_tools.h"

namespace tandrel {
namespace {

struct MirrorTool {
    std::string_view name;
    std::size_t operands;  // that must follow the name
    std::string_view usage;
    std::string_view help;
    Result<Json> (*run)(const MirrorArgs& args, MirrorServices& services);
};

// clang-format off
constexpr std::array kTools{
    //         name            operands  usage, what it does                                                               run
    MirrorTool{"find",            0, "usage: find [text]",
               "print the window of a phone-mirroring program",                                                             tools::find},
    MirrorTool{"ocr",             1, "usage: ocr <image>",
               "read the text on a picture",                                                                                tools::ocr},
    MirrorTool{"click",           2, "usage: click <x> <y> [--fraction] [--window ID]",
               "click in the mirroring window, at points or fractions of it",                                               tools::click},
    MirrorTool{"drag",            4, "usage: drag <x1> <y1> <x2> <y2> [--duration S] [--fraction] [--window ID]",
               "drag in the mirroring window",                                                                              tools::drag},
    MirrorTool{"type",            1, "usage: type <text> [--window ID]",
               "type into the mirroring window",                                                                            tools::type},
    MirrorTool{"key",             1, "usage: key <key> [--modifiers cmd,shift] [--window ID]",
               "press a key in the mirroring window",                                                                       tools::key},
    MirrorTool{"activate",        0, "usage: activate [--window ID]",
               "bring the mirroring window to the front",                                                                   tools::activate},
    MirrorTool{"trusted",         0, "usage: trusted",
               "say whether the pointer and the keyboard can be driven",                                                    tools::trusted},
    MirrorTool{"accessibility",   0, "usage: accessibility",
               "the same, and what is missing",                                                                             tools::accessibility},
    MirrorTool{"screen",          0, "usage: screen",
               "say whether windows can be captured",                                                                       tools::screen},
    MirrorTool{"camera",          0, "usage: camera",
               "say whether a phone's screen may be captured over its cable",                                               tools::camera},
    MirrorTool{"usb-list",        0, "usage: usb-list",
               "list the phones on a cable",                                                                                tools::usbList},
    MirrorTool{"usb-capture",     1, "usage: usb-capture <out.png|.jpg> [--device ID] [--max N] [--ocr] [--timeout S]",
               "save one picture of a phone on a cable",                                                                    tools::usbCapture},
    MirrorTool{"usb-serve",       0, "usage: usb-serve [--port N] [--device ID] [--image PATH] [--timeout S]",
               "serve a cabled phone's pictures on a loopback port",                                                        tools::usbServe},
    MirrorTool{"airplay-list",    0, "usage: airplay-list",
               "list the windows that may show a mirrored phone",                                                           tools::airplayList},
    MirrorTool{"airplay-capture", 1, "usage: airplay-capture <out.png|.jpg> [--window ID] [--max N] [--ocr] [--no-crop]",
               "save one picture of the mirrored phone",                                                                    tools::airplayCapture},
    MirrorTool{"airplay-serve",   0, "usage: airplay-serve [--port N] [--window ID] [--receive]",
               "serve the mirrored phone's pictures on a loopback port",                                                    tools::airplayServe},
    MirrorTool{"detect-rect",     1, "usage: detect-rect <image> [--aspect W/H] [--prefer portrait|landscape]",
               "find the phone's screen on a picture of a window",                                                          tools::detectRect},
    MirrorTool{"capture-latency", 0, "usage: capture-latency [--window ID] [--seconds S]",
               "time the delivery of a window's frames",                                                                    tools::captureLatency},
};
// clang-format on

bool hasOperands(const MirrorArgs& args, std::size_t count) {
    if (args.size() <= count) return false;
    return std::none_of(args.begin() + 1, args.begin() + 1 + static_cast<std::ptrdiff_t>(count),
                        [](const std::string& arg) { return arg.starts_with("--"); });
}

int failWith(std::string_view message, MirrorServices& services) {
    services.err << message << '\n';
    return 1;
}

const MirrorTool* findTool(std::string_view name) {
    const auto* tool = std::ranges::find(kTools, name, &MirrorTool::name);
    return tool == kTools.end() ? nullptr : tool;
}

int helpFor(const MirrorTool& tool, MirrorServices& services) {
    services.out << tool.usage << "\n  " << tool.help << '\n';
    return 0;
}

int help(const MirrorArgs& args, MirrorServices& services) {
    if (args.size() > 1 && args[1] != "--help") {
        const MirrorTool* tool = findTool(args[1]);
        if (tool == nullptr) return failWith("unknown command " + args[1], services);
        return helpFor(*tool, services);
    }
    services.out << "usage: tandrel-app TOOL ...  (tandrel-app help TOOL says with what)\n";
    for (const MirrorTool& tool : kTools) {
        services.out << fmt::format("  {:<17}{}\n", tool.name, tool.help);
    }
    return 0;
}

}  // namespace

std::optional<int> mirrorCommand(const MirrorArgs& args, MirrorServices& services) {
    if (args.empty()) return std::nullopt;
    if (args[0] == "help") return help(args, services);
    const MirrorTool* tool = findTool(args[0]);
    if (tool == nullptr) return std::nullopt;
    if (hasFlag(args, "--help")) return helpFor(*tool, services);
    if (!hasOperands(args, tool->operands)) return failWith(tool->usage, services);
    const auto result = tool->run(args, services);
    if (!result) return failWith(result.error().message, services);
    services.out << dumpJson(*result) << '\n' << std::flush;
    return services.out ? 0 : failWith("cannot write the result", services);
}

}  // namespace tandrel
