#include "hid/input.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/unicode.h"
#include "hid/debug_form.h"
#include "hid/held.h"
#include "hid/hid_peripheral.h"

namespace tandrel {
namespace {

constexpr double kShortestStep = 0.001;
constexpr double kLongestStep = 1;

// What an unknown name is cut to in the message about it.
constexpr std::size_t kLongestShownName = 200;

Result<void> checkSeconds(std::string_view what, double value) {
    // Written so that NaN is refused.
    if (value >= 0 && value <= Input::kLongestSeconds) return {};
    return fail(fmt::format("{} must be between 0 and {} seconds", what, Input::kLongestSeconds));
}

Result<void> checkDistance(Distance distance) {
    const auto isFar = [](int counts) {
        return counts < -Input::kFarthestNudge || counts > Input::kFarthestNudge;
    };
    if (!isFar(distance.dx) && !isFar(distance.dy)) return {};
    return fail(fmt::format("dx and dy must be between -{0} and {0}", Input::kFarthestNudge));
}

std::unexpected<Error> unknownKey(std::string_view name) {
    return fail("unknown key " + firstGraphemes(name, kLongestShownName));
}

Result<std::uint8_t> keyCode(std::string_view name) {
    if (const auto code = Keymap::find(Keymap::named, lowerCased(name))) return *code;
    if (const auto stroke = Keymap::stroke(name)) return stroke->code;
    return unknownKey(name);
}

Result<std::uint8_t> modifierBits(const std::vector<std::string>& names) {
    std::uint8_t bits = 0;
    for (const std::string& name : names) {
        const auto bit = Keymap::find(Keymap::modifiers, lowerCased(name));
        if (!bit) return unknownKey(name);
        bits |= *bit;
    }
    return bits;
}

Result<std::vector<Keymap::Stroke>> strokes(std::string_view text) {
    // Cut first, so that a huge text is not taken apart only to be refused.
    const std::vector<std::string> characters =
        graphemes(firstGraphemes(text, Input::kLongestText + 1));
    if (characters.size() > Input::kLongestText) {
        return fail(fmt::format("text is too long: at most {} characters can be typed at once",
                                Input::kLongestText));
    }
    std::vector<Keymap::Stroke> result;
    for (const std::string& character : characters) {
        const auto stroke = Keymap::stroke(character);
        if (!stroke) {
            return fail(fmt::format("cannot type {} with a US keyboard", debugForm(character)));
        }
        result.push_back(*stroke);
    }
    return result;
}

std::unexpected<Error> stopping() { return fail("Tandrel is stopping.", 503); }

}  // namespace

Input::Input(HIDPeripheral& hid, const Uuid& host, Clock& clock)
    : hid_(hid), host_(host), clock_(clock), queue_("pocketlink.input." + host.text(), clock) {}

Input::~Input() { stop(); }

void Input::setStep(double seconds) {
    // std::max takes its first argument when the second is NaN.
    step_ = std::min(std::max(kShortestStep, seconds), kLongestStep);
}

Result<void> Input::move(ScreenPoint to) { return play(moveSequence(to, step_)); }

Result<void> Input::tap(ScreenPoint at, double holdSeconds) {
    TRY_VOID(checkSeconds("hold", holdSeconds));
    return play(tapSequence(at, holdSeconds, step_));
}

Result<void> Input::swipe(ScreenPoint from, ScreenPoint to, double durationSeconds) {
    TRY_VOID(checkSeconds("duration", durationSeconds));
    return play(swipeSequence({from, to, durationSeconds}, step_));
}

Result<void> Input::nudge(int dx, int dy, Click click) {
    const Distance distance = {dx, dy};
    TRY_VOID(checkDistance(distance));
    const double step = step_;
    Sequence sequence = nudgeSequence(distance, step);
    if (click == Click::yes) std::ranges::copy(clickSequence(step), std::back_inserter(sequence));
    return play(sequence);
}

Result<void> Input::type(std::string_view text) {
    return play(typeSequence(TRY(strokes(text)), step_));
}

Result<Keymap::Stroke> Input::keyStroke(std::string_view name,
                                        const std::vector<std::string>& modifiers) {
    const std::uint8_t code = TRY(keyCode(name));
    const std::uint8_t bits = TRY(modifierBits(modifiers));
    return Keymap::Stroke{.code = code, .modifiers = bits};
}

Result<void> Input::key(std::string_view name, const std::vector<std::string>& modifiers) {
    const Keymap::Stroke stroke = TRY(keyStroke(name, modifiers));
    return play(typeSequence({&stroke, 1}, step_));
}

Result<void> Input::consumer(std::uint16_t usage) { return play(consumerSequence(usage, step_)); }

Result<void> Input::play(const Sequence& sequence) {
    return queue_.sync([this, &sequence] {
        queue_.assertCurrent();
        return playOnQueue(sequence);
    });
}

Result<void> Input::playOnQueue(const Sequence& sequence) {
    const std::stop_token stop = stop_.get_token();
    if (stop.stop_requested()) return stopping();
    const auto link = hid_.pointerLink(host_);
    Held held;
    for (const Step& step : sequence) {
        send(step.report);
        held.note(step.report);
        trackPointer(step, link);
        const bool isLast = &step == &sequence.back();
        if (clock_.sleepFor(step.pause, stop) || isLast) continue;
        for (const Report& release : held.release()) send(release);
        return stopping();
    }
    return {};
}

void Input::send(const Report& report) { hid_.send(report.id, report.bytes(), host_); }

void Input::trackPointer(const Step& step, std::optional<std::uint64_t> link) {
    if (step.pointer) {
        MutexLock lock(mutex_);
        pointer_ = link ? std::optional(KnownPointer{*step.pointer, *link}) : std::nullopt;
    } else if (movesRelatively(step.report)) {
        MutexLock lock(mutex_);
        pointer_ = std::nullopt;
    }
}

std::optional<ScreenPoint> Input::pointer() const {
    const auto known = [this] {
        MutexLock lock(mutex_);
        return pointer_;
    }();
    if (!known || hid_.pointerLink(host_) != known->link) return std::nullopt;
    return known->place;
}

void Input::stop() {
    stop_.request_stop();
    queue_.sync([] {});
}

}  // namespace tandrel
