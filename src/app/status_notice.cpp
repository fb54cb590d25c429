#include "app/status_notice.h"

#include <QtGlobal>

#include "app/owner_text.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

using Inputs = AppModelInputs;

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
    return {.title = ownerText("Notice", "Tandrel couldn't start its phone connection"),
            .detail = filledIn(ownerText("Notice", "%1. Quit Tandrel and open it again."),
                               {in.mode.detail})};
}

Notice servedByAnother(const Inputs& in) {
    return {
        .title =
            filledIn(ownerText("Notice", "%1 is running the phone connection"), {in.mode.detail}),
        .detail = ownerText(
            "Notice", "This copy of Tandrel leaves the iPhone to it. Quit it to use this copy."),
        .fix = Fix::quitOthers,
        .fixLabel = filledIn(ownerText("Notice", "Quit %1"), {in.mode.detail})};
}

Notice pluggedInButDark(const Inputs&) {
    return {.title = ownerText("Notice", "The iPhone isn't sharing its screen"),
            .detail = ownerText("Notice", "It's plugged in. Unlock it, and tap Trust if it asks."),
            .fix = Fix::showScreen,
            .fixLabel = ownerText("Notice", "Show me")};
}

Notice unplugged(const Inputs&) {
    return {.title = ownerText("Notice", "The iPhone's cable is unplugged"),
            .detail = ownerText("Notice", "Plug the iPhone into this Mac to let your AI see it."),
            .fix = Fix::showScreen,
            .fixLabel = ownerText("Notice", "Show me")};
}

Notice notMirrored(const Inputs& in) {
    return {.title = ownerText("Notice", "Screen Mirroring isn't on"),
            .detail = filledIn(
                ownerText("Notice", "On the iPhone: Control Center › Screen Mirroring › %1"),
                {in.macName}),
            .fix = Fix::showScreen,
            .fixLabel = ownerText("Notice", "Show me")};
}

Notice matching(const Inputs&) {
    return {.title = ownerText("Notice", "Matching the iPhone to its screen"),
            .detail = ownerText("Notice", "Keep it unlocked with AssistiveTouch on."),
            .fix = Fix::matchAgain,
            .fixLabel = ownerText("Notice", "Match Again")};
}

Notice notConnected(const Inputs& in) {
    return {
        .title = ownerText("Notice", "The iPhone isn't connected over Bluetooth"),
        .detail = filledIn(
            ownerText("Notice",
                      "Unlock it. If it doesn't reconnect, open Settings › Bluetooth on the iPhone "
                      "and tap %1 (it may be listed as “%2”)."),
            {in.advertisedName, in.macName}),
        .fix = Fix::reconnect,
        .fixLabel = ownerText("Notice", "Reconnect")};
}

Notice starting(const Inputs&) {
    return {.title = ownerText("Notice", "Tandrel is starting"),
            .detail = ownerText("Notice", "Tandrel's phone connection is starting.")};
}

Notice bluetoothDenied(const Inputs&) {
    return {.title = ownerText("Notice", "Bluetooth is switched off for Tandrel"),
            .detail = ownerText(
                "Notice", "Turn it back on in System Settings › Privacy & Security › Bluetooth."),
            .fix = Fix::bluetoothPrivacy,
            .fixLabel = ownerText("Notice", "Open Bluetooth Privacy")};
}

Notice bluetoothOff(const Inputs&) {
    return {.title = ownerText("Notice", "Bluetooth is off on this Mac"),
            .detail = ownerText("Notice",
                                "Turn it on in Control Center. The iPhone reconnects by itself."),
            .fix = Fix::bluetoothSettings,
            .fixLabel = ownerText("Notice", "Open Bluetooth Settings")};
}

Notice screenOff(const Inputs&) {
    return {.title = ownerText("Notice", "The iPhone's screen is off"),
            .detail = ownerText(
                "Notice",
                "Wake it and unlock it. Auto-Lock › Never keeps it awake while your AI works.")};
}

Notice locked(const Inputs&) {
    return {.title = ownerText("Notice", "Your iPhone is locked"),
            .detail = ownerText(
                "Notice", "Unlock it so your AI can use it. Your AI can't unlock it for you.")};
}

struct NoticeRule {
    bool (*applies)(const Inputs&);
    Notice (*notice)(const Inputs&);  // none: the rule says that there is no notice
};

// The first row that applies wins, so a row may take for granted that those above it do not.
// clang-format off
constexpr NoticeRule kNoticeRules[] = {
    {[](const Inputs& in) { return in.mode.kind == EngineMode::Kind::failed; },                engineFailed},
    {[](const Inputs& in) { return in.mode.kind == EngineMode::Kind::external; },              servedByAnother},
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
    {isBeingSetUp,                               QT_TRANSLATE_NOOP("Notice", "Setup isn't finished")},
    {[](const Inputs& in) { return in.paused; }, QT_TRANSLATE_NOOP("Notice", "Paused: your AI can look but not tap")},
    {[](const Inputs&) { return true; },         QT_TRANSLATE_NOOP("Notice", "iPhone ready")},
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
    return ownerText("Notice", firstThatApplies(kHeadlineRules, inputs)->text);
}

}  // namespace tandrel
