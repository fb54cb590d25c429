#include <ranges>

#include "screen/mirror_tools.h"
#include "screen/window_search.h"

namespace tandrel::tools {
namespace {

// The window to drive and the input to drive it with.
struct Target {
    WinInfo window;
    std::unique_ptr<SyntheticInput> input;

    Json done() const { return {{"ok", true}, {"window", window.id}, {"title", window.title}}; }
};

Result<Target> target(const MirrorArgs& args, MirrorServices& services) {
    const auto id = TRY(windowOption(args));
    const MirrorPlatform platform = TRY(services.openPlatform());
    auto window = id ? TRY(windowInfo(platform.windows, *id)) : TRY(findWindow(platform.windows, ""));
    if (!window && id) return std::unexpected(windowIsGone(*id));
    if (!window) return fail(kNoMirroringApp);
    return Target { *std::move(window), TRY(services.openInput()) };
}

// The place that two operands name, in points of the desktop.
Result<DesktopPoint> place(const MirrorArgs& args, std::size_t first, const WinInfo& window) {
    const auto x = parseNumber(args[first]);
    const auto y = parseNumber(args[first + 1]);
    if (!x || !y) return fail("a place is two numbers, not " + args[first] + " " + args[first + 1]);
    const bool isFraction = hasFlag(args, "--fraction");
    const DesktopPoint inside{isFraction ? *x * window.frame.width : *x,
                              isFraction ? *y * window.frame.height : *y};
    // Another window's content lies beyond.
    if (inside.x < 0 || inside.y < 0 || inside.x >= window.frame.width ||
        inside.y >= window.frame.height) {
        return fail("the place lies outside the window");
    }
    return DesktopPoint{window.frame.x + inside.x, window.frame.y + inside.y};
}

std::vector<std::string> modifiers(const MirrorArgs& args) {
    std::vector<std::string> names;
    const std::string list = option(args, "--modifiers").value_or("");
    for (const auto part : std::views::split(list, ',')) {
        if (!part.empty()) names.emplace_back(part.begin(), part.end());
    }
    return names;
}

}  // namespace

Result<Json> click(const MirrorArgs& args, MirrorServices& services) {
    const Target to = TRY(target(args, services));
    const DesktopPoint at = TRY(place(args, 1, to.window));
    TRY_VOID(to.input->activate(to.window.id));
    TRY_VOID(to.input->click(at));
    return to.done();
}

Result<Json> drag(const MirrorArgs& args, MirrorServices& services) {
    constexpr double kDurationSeconds = 0.3;
    constexpr double kLongestDrag = 10;  // nothing ends one before its time
    const double duration =
        TRY(numberOption(args, "--duration", kDurationSeconds, 0, kLongestDrag));
    const Target to = TRY(target(args, services));
    const DesktopPoint from = TRY(place(args, 1, to.window));
    const DesktopPoint end = TRY(place(args, 3, to.window));
    TRY_VOID(to.input->activate(to.window.id));
    TRY_VOID(to.input->drag(from, end, seconds(duration)));
    return to.done();
}

Result<Json> type(const MirrorArgs& args, MirrorServices& services) {
    const Target to = TRY(target(args, services));
    TRY_VOID(to.input->activate(to.window.id));
    TRY_VOID(to.input->type(args[1]));
    return to.done();
}

Result<Json> key(const MirrorArgs& args, MirrorServices& services) {
    const Target to = TRY(target(args, services));
    TRY_VOID(to.input->activate(to.window.id));
    TRY_VOID(to.input->key(args[1], modifiers(args)));
    return to.done();
}

Result<Json> activate(const MirrorArgs& args, MirrorServices& services) {
    const Target to = TRY(target(args, services));
    TRY_VOID(to.input->activate(to.window.id));
    return to.done();
}

}  // namespace tandrel::tools
