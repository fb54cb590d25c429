#include "app/wake_check.h"

#include "base/log.h"

namespace tandrel {

WakeCheck::WakeCheck(Power& power, MainLoop& loop, Deeds deeds)
    : power_(power), loop_(loop), deeds_(std::move(deeds)) {
    power_.setOnSleep([this] { deeds_.letGo(); });
    power_.setOnWake([this] { timer_ = loop_.after(kCheckAfterWake, [this] { check(); }); });
}

WakeCheck::~WakeCheck() {
    power_.setOnSleep({});
    power_.setOnWake({});
}

bool WakeCheck::isMissed(const AppSnapshot& now) {
    if (!now.phoneWasSetUp || now.inputs.paused) return false;
    return !now.inputs.phoneConnected || now.inputs.screenSource == ScreenSource::none;
}

void WakeCheck::check() const {
    if (!isMissed(deeds_.snapshot())) return;
    log("wake: iPhone not back after 10 s, reconnecting");
    deeds_.reconnect();
}

}  // namespace tandrel
