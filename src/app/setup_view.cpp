#include "app/setup_view.h"

#include <algorithm>

namespace tandrel {
namespace {

bool anyAppAdded(const AppSnapshot& app) {
    return std::ranges::any_of(
        app.aiApps, [](const AIAppStatus& status) { return status.link == Link::addedHere; });
}

}  // namespace

std::optional<Notice> noticeOf(SetupStep step, AppModelInputs inputs) {
    inputs.setupDone = true;
    if (step != SetupStep::bluetooth) {
        inputs.bluetoothPerm = Permission::granted;
        inputs.bluetoothState.clear();
    }
    if (step != SetupStep::screen) {
        inputs.screenSource = ScreenSource::usb;
        inputs.screenState = PhoneScreen::awake;
    }
    if (step != SetupStep::pairing) inputs.phoneConnected = true;
    return notice(inputs);
}

bool isDone(SetupStep step, const SetupView& view) {
    const AppModelInputs& in = view.app.inputs;
    switch (step) {
        case SetupStep::bluetooth:
            return in.bluetoothReady;
        case SetupStep::screen:
            return in.screenReady;
        case SetupStep::pairing:
            return in.phoneConnected;
        case SetupStep::pointer:
            return view.app.assistiveTouchOn;
        case SetupStep::apps:
            return anyAppAdded(view.app);
        case SetupStep::test:
            return view.app.testPassed.value_or(false);
    }
    return false;
}

SetupStep firstOpenStep(const SetupView& view) {
    for (int i = 0; i < kSetupSteps; ++i) {
        const auto step = static_cast<SetupStep>(i);
        if (!isDone(step, view)) return step;
    }
    return SetupStep::test;
}

}  // namespace tandrel
