#include "platform/virtual/virtual_phone.h"

#include <algorithm>
#include <chrono>
#include <future>

namespace tandrel {
namespace {

constexpr Duration kFrameInterval =
    Duration(std::chrono::seconds(1)) / VirtualPhone::kFramesPerSecond;

// A future that is told at most once, from whichever call comes first.
class Signal {
 public:
    void raise() {
        if (!raised_.exchange(true)) promise_.set_value();
    }
    // In real time, also under a clock turned by hand: it bounds a wait that ought to end anyway.
    bool wait(double timeoutSeconds) {
        return promise_.get_future().wait_for(seconds(timeoutSeconds)) == std::future_status::ready;
    }

 private:
    std::atomic<bool> raised_{false};
    std::promise<void> promise_;
};

}  // namespace

VirtualPhone::VirtualPhone(Scenario scenario, Clock& clock)
    : scenario_(std::move(scenario)),
      clock_(clock),
      model_(scenario_, fonts_),
      painter_(fonts_, scenario_.phone.scale),
      links_{.plugged = scenario_.phone.plugged,
             .bluetooth = scenario_.phone.paired,
             .mirroring = scenario_.phone.mirroring},
      blackFrame_(blackFrame(scenario_.phone.width, scenario_.phone.height)),
      queue_("tandrel.virtual." + scenario_.phone.id, clock) {
    queue_.post([this] {
        queue_.assertCurrent();
        scheduleLater();
    });
}

VirtualPhone::~VirtualPhone() { queue_.stop(); }

void VirtualPhone::onQueue(const std::function<void()>& task) {
    if (queue_.isCurrent()) return task();
    queue_.sync([&task] { task(); });
}

void VirtualPhone::act(const std::function<void(PhoneModel&)>& deed) {
    onQueue([this, &deed] {
        queue_.assertCurrent();
        deed(model_);
        followUp();
        deliver();
    });
}

void VirtualPhone::receive(std::vector<InputEvent> events) {
    queue_.post([this, events = std::move(events)] {
        queue_.assertCurrent();
        for (const InputEvent& event : events) model_.receive(event, clock_.now());
        followUp();
    });
}

bool VirtualPhone::takeRefusal() {
    int left = refusals_;
    while (left > 0 && !refusals_.compare_exchange_weak(left, left - 1)) {
    }
    return left > 0;
}

void VirtualPhone::refuseNextUpdates(int count) { refusals_ = std::max(count, 0); }

void VirtualPhone::touch(TouchPhase phase, ScreenFraction at) {
    act([this, phase, at](PhoneModel& model) { model.touch(phase, at, clock_.now()); });
}

void VirtualPhone::tap(ScreenFraction at) {
    touch(TouchPhase::down, at);
    touch(TouchPhase::up, at);
}

void VirtualPhone::doubleClickSideButton() { act(&PhoneModel::doubleClickSideButton); }
void VirtualPhone::goHome() { act(&PhoneModel::goHome); }
void VirtualPhone::sleep() { act(&PhoneModel::sleep); }
void VirtualPhone::wake() { act(&PhoneModel::wake); }
void VirtualPhone::lock() { act(&PhoneModel::lock); }
void VirtualPhone::unlock() { act(&PhoneModel::unlock); }
void VirtualPhone::rotate() { act(&PhoneModel::rotate); }
void VirtualPhone::showPage(const std::string& name) {
    act([&name](PhoneModel& model) { model.showPage(name); });
}

// What follows from a change: troubles that an action asked for, what the new page does later, and
// whoever waits for the record.
void VirtualPhone::followUp() {
    startTroubles();
    scheduleLater();
    if (recordWatchers_.empty()) return;
    const VirtualPhoneRecord& record = model_.record();
    std::erase_if(recordWatchers_, [&](const auto& watcher) { return watcher.second(record); });
}

void VirtualPhone::scheduleLater() {
    const auto& later = model_.page().later;
    if (!later || scheduledVisit_ == model_.visit()) return;
    scheduledVisit_ = model_.visit();
    queue_.postAfter(seconds(later->seconds), [this, visit = scheduledVisit_] {
        queue_.assertCurrent();
        if (visit != model_.visit()) return;
        const Action action = model_.page().later->action;
        model_.perform(action);
        followUp();
    });
}

void VirtualPhone::startTroubles() {
    for (const Action& action : model_.takeTroubles()) {
        applyTrouble(action.trouble, TroublePhase::begins);
        if (action.seconds <= 0) continue;
        queue_.postAfter(seconds(action.seconds), [this, trouble = action.trouble] {
            queue_.assertCurrent();
            applyTrouble(trouble, TroublePhase::ends);
            followUp();
        });
    }
}

void VirtualPhone::setTrouble(Trouble trouble, TroublePhase phase) {
    act([this, trouble, phase](PhoneModel&) {
        queue_.assertCurrent();
        applyTrouble(trouble, phase);
    });
}

void VirtualPhone::applyTrouble(Trouble trouble, TroublePhase phase) {
    const bool begins = phase == TroublePhase::begins;
    PhoneLinks links = links_;
    switch (trouble) {
        case Trouble::none:
            return;
        case Trouble::vanish:
            return setLinks({.plugged = !begins,
                             .bluetooth = !begins && scenario_.phone.paired,
                             .mirroring = !begins && scenario_.phone.mirroring});
        case Trouble::unplug:
            links.plugged = !begins;
            return setLinks(links);
        case Trouble::disconnectBluetooth:
            links.bluetooth = !begins && scenario_.phone.paired;
            return setLinks(links);
        case Trouble::stopMirroring:
            links.mirroring = !begins;
            return setLinks(links);
        case Trouble::freeze:
            frozen_ = begins;
            return;
        case Trouble::goBlack:
            black_ = begins;
            return;
        case Trouble::lock:
            return begins ? model_.lock() : model_.unlock();
        case Trouble::sleep:
            return begins ? model_.sleep() : model_.unlock();
    }
}

void VirtualPhone::setLinks(PhoneLinks links) {
    if (links == links_) return;
    links_ = links;
    for (const auto& [token, changed] : linkWatchers_) changed(links);
}

// No two watchers of any kind have the same token.
PhoneSubscriptionPtr VirtualPhone::subscription(int token) {
    return std::make_unique<PhoneSubscription>([this, token] {
        onQueue([this, token] {
            queue_.assertCurrent();
            frameWatchers_.erase(token);
            linkWatchers_.erase(token);
            recordWatchers_.erase(token);
        });
    });
}

PhoneSubscriptionPtr VirtualPhone::watchFrames(View view, FrameSink sink) {
    int token = 0;
    onQueue([&] {
        queue_.assertCurrent();
        token = ++lastToken_;
        if (const PixelBuffer first = frameFor(view)) sink(first);
        frameWatchers_.emplace(token, FrameWatcher{view, std::move(sink)});
        startTicking();
    });
    return subscription(token);
}

PhoneSubscriptionPtr VirtualPhone::watchLinks(std::function<void(PhoneLinks)> changed) {
    int token = 0;
    onQueue([&] {
        queue_.assertCurrent();
        token = ++lastToken_;
        changed(links_);
        linkWatchers_.emplace(token, std::move(changed));
    });
    return subscription(token);
}

void VirtualPhone::startTicking() {
    if (ticking_) return;
    ticking_ = true;
    nextTick_ = clock_.now();
    tick();
}

// Frames are due at equal distances; a tick that comes late does not push the next ones back, but
// ticks that were missed altogether are not made up for.
void VirtualPhone::tick() {
    const TimePoint now = clock_.now();
    nextTick_ = std::max(nextTick_ + kFrameInterval, now);
    queue_.postAfter(nextTick_ - now, [this] {
        queue_.assertCurrent();
        ticking_ = !frameWatchers_.empty();
        if (!ticking_) return;
        deliver();
        tick();
    });
}

void VirtualPhone::deliver() {
    for (const auto& [token, watcher] : frameWatchers_) {
        if (const PixelBuffer frame = frameFor(watcher.view)) watcher.sink(frame);
    }
}

// None while the view brings no frames.
PixelBuffer VirtualPhone::frameFor(View view) {
    if (view == View::display) return painter_.paint(model_);
    const bool isLinked = view == View::cable ? links_.plugged : links_.mirroring;
    if (!isLinked || frozen_) return {};
    return black_ ? blackFrame_ : painter_.paint(model_);
}

std::optional<ScreenFraction> VirtualPhone::find(const std::string& label) {
    std::optional<ScreenFraction> place;
    onQueue([&] {
        queue_.assertCurrent();
        place = model_.find(label);
    });
    return place;
}

PhoneLinks VirtualPhone::links() {
    PhoneLinks links;
    onQueue([&] {
        queue_.assertCurrent();
        links = links_;
    });
    return links;
}

VirtualPhoneRecord VirtualPhone::record() {
    VirtualPhoneRecord record;
    onQueue([&] {
        queue_.assertCurrent();
        record = model_.record();
    });
    return record;
}

PixelBuffer VirtualPhone::frame() {
    PixelBuffer frame;
    onQueue([&] {
        queue_.assertCurrent();
        frame = frameFor(View::display);
    });
    return frame;
}

bool VirtualPhone::awaitRecord(std::function<bool(const VirtualPhoneRecord&)> fits,
                               double timeoutSeconds) {
    const auto signal = std::make_shared<Signal>();
    int token = 0;
    onQueue([&] {
        queue_.assertCurrent();
        token = ++lastToken_;
        if (fits(model_.record())) return signal->raise();
        recordWatchers_.emplace(token, [signal, fits](const VirtualPhoneRecord& record) {
            const bool done = fits(record);
            if (done) signal->raise();
            return done;
        });
    });
    const auto watching = subscription(token);
    return signal->wait(timeoutSeconds);
}

bool VirtualPhone::awaitFrame(const std::function<bool(const PixelBuffer&)>& fits,
                              double timeoutSeconds) {
    const auto signal = std::make_shared<Signal>();
    const auto watching = watchFrames(View::cable, [signal, fits](const PixelBuffer& frame) {
        if (fits(frame)) signal->raise();
    });
    return signal->wait(timeoutSeconds);
}

}  // namespace tandrel
