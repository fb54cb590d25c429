#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/pixel_buffer.h"
#include "base/serial_queue.h"
#include "platform/capture_devices.h"
#include "platform/virtual/frame_painter.h"
#include "platform/virtual/phone_model.h"
#include "platform/virtual/phone_record.h"
#include "platform/virtual/scenario.h"

namespace tandrel {

// What connects a phone with the computer at the moment.
struct PhoneLinks {
    bool plugged = false;
    bool bluetooth = false;
    bool mirroring = false;  // its screen, over the network

    bool operator==(const PhoneLinks&) const = default;
};

// Ends what it stands for when it goes, and waits for a call under way; not to be dropped by that
// call's own doing from another thread.
class [[nodiscard]] PhoneSubscription {
 public:
    explicit PhoneSubscription(std::function<void()> end) : end_(std::move(end)) {}
    ~PhoneSubscription() { end_(); }
    PhoneSubscription(const PhoneSubscription&) = delete;
    PhoneSubscription& operator=(const PhoneSubscription&) = delete;

 private:
    const std::function<void()> end_;
};
using PhoneSubscriptionPtr = std::unique_ptr<PhoneSubscription>;

// A phone made of a scenario: takes what a keyboard and a pointer send, what its owner does, and
// misbehaves on command. All operations may be called from any thread. A verb returns when it has
// taken effect: it is in the record, and whoever watches frames has been given the one that shows
// it.
class VirtualPhone {
 public:
    VirtualPhone(Scenario scenario, Clock& clock);
    ~VirtualPhone();
    VirtualPhone(const VirtualPhone&) = delete;
    VirtualPhone& operator=(const VirtualPhone&) = delete;

    // While anybody watches, a frame comes this often, drawn anew only when the screen changed.
    static constexpr int kFramesPerSecond = 30;

    const PhoneTraits& traits() const { return scenario_.phone; }

    // The keyboard's and the pointer's side, for the Bluetooth link. Returns at once.
    void receive(std::vector<InputEvent> events);
    // Whether an update for this phone is to be refused; each refusal that was ordered counts once.
    bool takeRefusal();

    // The owner's side: fingers on the glass and the side button.
    void touch(TouchPhase phase, ScreenFraction at);
    void tap(ScreenFraction at);
    void doubleClickSideButton();
    void goHome();
    void sleep();
    void wake();
    void lock();
    void unlock();
    void rotate();
    void showPage(const std::string& name);  // a name without a page changes nothing

    // Misbehaviour, and its end.
    void refuseNextUpdates(int count);  // the Bluetooth transmit queue is full that many times
    void vanish() {
        setTrouble(Trouble::vanish, TroublePhase::begins);
    }  // all links, as if carried off
    void comeBack() { setTrouble(Trouble::vanish, TroublePhase::ends); }
    void unplug() { setTrouble(Trouble::unplug, TroublePhase::begins); }
    void plug() { setTrouble(Trouble::unplug, TroublePhase::ends); }
    void disconnectBluetooth() { setTrouble(Trouble::disconnectBluetooth, TroublePhase::begins); }
    // A phone that is not paired stays away.
    void connectBluetooth() { setTrouble(Trouble::disconnectBluetooth, TroublePhase::ends); }
    void stopMirroring() { setTrouble(Trouble::stopMirroring, TroublePhase::begins); }
    // A phone that does not mirror by its scenario does so from then on.
    void startMirroring() { setTrouble(Trouble::stopMirroring, TroublePhase::ends); }
    // Neither way brings a frame any more, or black ones; the phone itself goes on.
    void freeze() { setTrouble(Trouble::freeze, TroublePhase::begins); }
    void thaw() { setTrouble(Trouble::freeze, TroublePhase::ends); }
    void goBlack() { setTrouble(Trouble::goBlack, TroublePhase::begins); }
    void lightUp() { setTrouble(Trouble::goBlack, TroublePhase::ends); }

    // Frames for `sink` on the phone's thread, the first at once: `cable` as the computer gets them
    // while the phone is plugged in, `mirror` the same while it mirrors, `display` as the phone
    // itself shows them, always.
    enum class View { cable, mirror, display };
    PhoneSubscriptionPtr watchFrames(View view, FrameSink sink);
    // Called on the phone's thread with the links as they are, at once and after each change.
    PhoneSubscriptionPtr watchLinks(std::function<void(PhoneLinks)> changed);

    // Where the thing with this label (a row's text, an icon's label, a field's name) is on the
    // screen; none when it cannot be seen. A row with a switch gives the switch.
    std::optional<ScreenFraction> find(const std::string& label);

    PhoneLinks links();
    VirtualPhoneRecord record();
    // What the phone itself shows now.
    PixelBuffer frame();

    // Waits until the record fits and says whether it did within the time. `fits` runs on the
    // phone's thread.
    bool awaitRecord(std::function<bool(const VirtualPhoneRecord&)> fits,
                     double timeoutSeconds = 10);
    // The same for a frame that comes over the cable.
    bool awaitFrame(const std::function<bool(const PixelBuffer&)>& fits,
                    double timeoutSeconds = 10);

 private:
    struct FrameWatcher {
        View view;
        FrameSink sink;
    };
    enum class TroublePhase { begins, ends };

    void onQueue(const std::function<void()>& task);
    void act(const std::function<void(PhoneModel&)>& deed);
    void setTrouble(Trouble trouble, TroublePhase phase);
    PhoneSubscriptionPtr subscription(int token);

    void followUp() RUNS_ON(queue_);
    void scheduleLater() RUNS_ON(queue_);
    void startTroubles() RUNS_ON(queue_);
    void applyTrouble(Trouble trouble, TroublePhase phase) RUNS_ON(queue_);
    void setLinks(PhoneLinks links) RUNS_ON(queue_);
    void startTicking() RUNS_ON(queue_);
    void tick() RUNS_ON(queue_);
    void deliver() RUNS_ON(queue_);
    PixelBuffer frameFor(View view) RUNS_ON(queue_);

    const Scenario scenario_;
    Clock& clock_;
    std::atomic<int> refusals_{0};

    Fonts fonts_ OWNED_BY(queue_);
    PhoneModel model_ OWNED_BY(queue_);
    FramePainter painter_ OWNED_BY(queue_);
    PhoneLinks links_ OWNED_BY(queue_);
    bool frozen_ OWNED_BY(queue_) = false;
    bool black_ OWNED_BY(queue_) = false;
    PixelBuffer blackFrame_ OWNED_BY(queue_);
    TimePoint nextTick_ OWNED_BY(queue_);
    bool ticking_ OWNED_BY(queue_) = false;
    std::uint64_t scheduledVisit_ OWNED_BY(queue_) = 0;
    int lastToken_ OWNED_BY(queue_) = 0;
    std::map<int, FrameWatcher> frameWatchers_ OWNED_BY(queue_);
    std::map<int, std::function<void(PhoneLinks)>> linkWatchers_ OWNED_BY(queue_);
    // Each says whether it is done and can go.
    std::map<int, std::function<bool(const VirtualPhoneRecord&)>> recordWatchers_ OWNED_BY(queue_);
    SerialQueue queue_;
};

}  // namespace tandrel
