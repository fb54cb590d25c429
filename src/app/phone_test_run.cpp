#include "app/phone_test_run.h"

namespace tandrel {

PhoneTestRun::PhoneTestRun(AppState& state, EnginePlace place, MainLoop& loop, Clock& clock,
                           Changed changed)
    : state_(state),
      place_(std::move(place)),
      loop_(loop),
      clock_(clock),
      changed_(std::move(changed)),
      queue_("tandrel.test", clock) {}

PhoneTestRun::~PhoneTestRun() {
    stopping_.request_stop();
    queue_.stop();
}

void PhoneTestRun::start() {
    if (progress_.running) return;
    show({.running = true});
    queue_.post([this] {
        const TryIt phone(place_, clock_, {}, stopping_.get_token());
        PhoneTest test(phone, [this](const PhoneTest::Progress& now) {
            if (now.screenState) state_.setScreenState(*now.screenState);
            if (now.assistiveTouchOn) state_.setAssistiveTouchOn();
            loop_.post([this, now, alive = std::weak_ptr(alive_)] {
                if (!alive.expired()) show(now);
            });
        });
        const AppModelInputs inputs = state_.snapshot().inputs;
        const auto ended = test.run({.paused = inputs.paused, .from = TryIt::preferred(inputs)});
        if (ended.message) state_.setTestPassed(ended.passed);
        state_.refresh();
    });
}

void PhoneTestRun::checkPointer(std::function<void(const PhoneTest::PointerLook& look)> done) {
    queue_.post([this, done = std::move(done)] {
        const TryIt phone(place_, clock_, {}, stopping_.get_token());
        const auto from = TryIt::preferred(state_.snapshot().inputs);
        const auto look = PhoneTest::pointerShows(phone, from);
        if (look.shown) state_.setAssistiveTouchOn();
        loop_.post([done, look, alive = std::weak_ptr(alive_)] {
            if (!alive.expired()) done(look);
        });
    });
}

void PhoneTestRun::show(const PhoneTest::Progress& now) {
    progress_ = now;
    changed_(progress_);
}

}  // namespace tandrel
