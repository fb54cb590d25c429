#include "app/status_notice.h"

#include <fmt/format.h>

#include "base/unicode.h"

namespace tandrel {
namespace {

using Inputs = AppModelInputs;
using Kind = EngineMode::Kind;

bool isBeingSetUp(const Inputs& in) {
    const bool allReady = in.bluetoothReady && in.screenReady && in.phoneConnected;
    return !in.setupDone && !allReady && !in.lastHealthyKnown;
}

bool isBluetoothOff(const Inputs& in) {
    const std::string state = lowerCased(in.bluetoothState);
    return state.find("bluetooth off") != std::string::npos ||
           state.find("powered off") != std::string::npos;
}

bool lacksCable(const Inputs& in) {
    return in.linkChoice == LinkChoice::usb && !in.usbPhone &&
           in.screenSource == ScreenSource::none;
}

bool lacksAirplay(const Inputs& in) {
    return in.linkChoice == LinkChoice::airplay && in.screenSource == ScreenSource::none;
}

Notice engineFailed(const Inputs& in) {
    return {.title = "Tandrel couldn't start its phone connection",
            .detail = in.mode.detail + ". Quit Tandrel and open it again."};
}

Notice servedByAnother(const Inputs& in) {
    return {.title = in.mode.detail + " is running the phone connection",
            .detail = "This copy of Tandrel leaves the iPhone to it. Quit it to use this copy.",
            .fix = Fix::quitOthers,
            .fixLabel = "Quit " + in.mode.detail};
}

Notice pluggedInButDark(const Inputs&) {
    return {.title = "The iPhone isn't sharing its screen",
            .detail = "It's plugged in. Unlock it, and tap Trust if it asks.",
            .fix = Fix::showScreen,
            .fixLabel = "Show me"};
}

Notice unplugged(const Inputs&) {
    return {.title = "The iPhone's cable is unplugged",
            .detail = "Plug the iPhone into this Mac to let your AI see it.",
            .fix = Fix::showScreen,
            .fixLabel = "Show me"};
}

Notice notMirrored(const Inputs& in) {
    return {.title = "Screen Mirroring isn't on",
            .detail = "On the iPhone: Control Center › Screen Mirroring › " + in.macName,
            .fix = Fix::showScreen,
            .fixLabel = "Show me"};
}

Notice matching(const Inputs&) {
    return {.title = "Matching the iPhone to its screen",
            .detail = "Keep it unlocked with AssistiveTouch on.",
            .fix = Fix::matchAgain,
            .fixLabel = "Match Again"};
}

Notice notConnected(const Inputs& in) {
    return {.title = "The iPhone isn't connected over Bluetooth",
            .detail = fmt::format(
                "Unlock it. If it doesn't reconnect, open Settings › Bluetooth on the iPhone and "
                "tap {} (it may be listed as “{}”).",
                in.advertisedName, in.macName),
            .fix = Fix::reconnect,
            .fixLabel = "Reconnect"};
}

Notice starting(const Inputs&) {
    return {.title = "Tandrel is starting", .detail = "Tandrel's phone connection is starting."};
}

Notice bluetoothDenied(const Inputs&) {
    return {.title = "Bluetooth is switched off for Tandrel",
            .detail = "Turn it back on in System Settings › Privacy & Security › Bluetooth.",
            .fix = Fix::bluetoothPrivacy,
            .fixLabel = "Open Bluetooth Privacy"};
}

Notice bluetoothOff(const Inputs&) {
    return {.title = "Bluetooth is off on this Mac",
            .detail = "Turn it on in Control Center. The iPhone reconnects by itself.",
            .fix = Fix::bluetoothSettings,
            .fixLabel = "Open Bluetooth Settings"};
}

Notice screenOff(const Inputs&) {
    return {
        .title = "The iPhone's screen is off",
        .detail = "Wake it and unlock it. Auto-Lock › Never keeps it awake while your AI works."};
}

Notice locked(const Inputs&) {
    return {.title = "Your iPhone is locked",
            .detail = "Unlock it so your AI can use it. Your AI can't unlock it for you."};
}

struct NoticeRule {
    bool (*applies)(const Inputs&);
    Notice (*notice)(const Inputs&);  // none: the rule says that there is no notice
};

// The first row that applies wins, so a row may take for granted that those above it do not.
// clang-format off
constexpr NoticeRule kNoticeRules[] = {
    {[](const Inputs& in) { return in.mode.kind == Kind::failed; },                engineFailed},
    {[](const Inputs& in) { return in.mode.kind == Kind::external; },              servedByAnother},
    {[](const Inputs& in) { return !in.engineUp; },                                starting},
    {isBeingSetUp,                                                                 nullptr},
    {[](const Inputs& in) { return in.bluetoothPerm == Permission::denied; },      bluetoothDenied},
    {isBluetoothOff,                                                               bluetoothOff},
    {[](const Inputs& in) { return lacksCable(in) && in.usbPlugged; },             pluggedInButDark},
    {lacksCable,                                                                   unplugged},
    {lacksAirplay,                                                                 notMirrored},
    {[](const Inputs& in) { return in.screenState == PhoneScreen::off; },          screenOff},
    {[](const Inputs& in) { return in.screenState == PhoneScreen::locked; },       locked},
    {[](const Inputs& in) { return !in.phoneConnected && in.anyBluetoothHost &&
                                   in.linkChoice == LinkChoice::usb; },            matching},
    {[](const Inputs& in) { return !in.phoneConnected; },                          notConnected},
};

struct HealthRule {
    bool (*applies)(const Inputs&);
    Health health;
};

constexpr HealthRule kHealthRules[] = {
    {[](const Inputs& in) { return in.paused; },             Health::paused},
    {[](const Inputs& in) { return notice(in).has_value(); }, Health::attention},
    {isBeingSetUp,                                           Health::setup},
    {[](const Inputs&) { return true; },                     Health::ready},
};

struct HeadlineRule {
    bool (*applies)(const Inputs&);
    const char* text;
};

// A notice's title comes before these.
constexpr HeadlineRule kHeadlineRules[] = {
    {isBeingSetUp,                               "Setup isn't finished"},
    {[](const Inputs& in) { return in.paused; }, "Paused: your AI can look but not tap"},
    {[](const Inputs&) { return true; },         "iPhone ready"},
};
// clang-format on

template <typename Rule, std::size_t size>
const Rule* firstThatApplies(const Rule (&rules)[size], const Inputs& inputs) {
    for (const Rule& rule : rules) {
        if (rule.applies(inputs)) return &rule;
    }
    return nullptr;
}

}  // namespace

std::optional<Notice> notice(const AppModelInputs& inputs) {
    const NoticeRule* rule = firstThatApplies(kNoticeRules, inputs);
    if (rule == nullptr || rule->notice == nullptr) return std::nullopt;
    return rule->notice(inputs);
}

Health health(const AppModelInputs& inputs) {
    return firstThatApplies(kHealthRules, inputs)->health;
}

std::string headline(const AppModelInputs& inputs) {
    if (const auto shown = notice(inputs)) return shown->title;
    return firstThatApplies(kHeadlineRules, inputs)->text;
}

}  // namespace tandrel
