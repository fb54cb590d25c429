#include "payments/payment_gate.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "base/log.h"

namespace tandrel {
namespace {

constexpr double kDefaultTimeoutSeconds = 50;
constexpr double kShortestTimeoutSeconds = 3;
constexpr double kLongestTimeoutSeconds = 120;
// What a waiting action adds to the owner's time: the reading and the acting of the one before it.
constexpr double kTurnMarginSeconds = 15;
constexpr Duration kPaymentIsRecent = std::chrono::seconds(120);
constexpr Duration kTooLateToAskAgain = std::chrono::seconds(2);

constexpr std::string_view kAnotherWaits =
    "Not done: Tandrel is still waiting for the owner to answer a payment request. Try again in a "
    "minute.";
constexpr std::string_view kNoScreenAfterPayment =
    "Not done: the iPhone was showing a payment a moment ago and Tandrel can't see its screen "
    "right now, so it can't check this action. Read the screen again (screenshot) and repeat.";
constexpr std::string_view kUnreadableScreen =
    "Not done: Tandrel can't read the iPhone's screen right now, so it can't check this action. "
    "Read the screen again (screenshot) and repeat.";
constexpr std::string_view kNoScreenAfterApproval =
    "Not done: the owner approved, but Tandrel couldn't see the iPhone's screen to check it still "
    "shows the same payment. Read the screen and repeat to ask again.";
constexpr std::string_view kChangedAfterApproval =
    "Not done: the payment on screen changed after the owner approved it (now {}), so that "
    "approval doesn't count. Repeat the action to ask again.";
constexpr std::string_view kDenied =
    "The owner denied this on their Mac ({}). Don't retry this payment.";
constexpr std::string_view kNotAnswered =
    "Not done: the owner didn't answer the payment request on their Mac within {} seconds ({}), so "
    "it counts as a no. Repeat the action only if the owner asks you to.";
constexpr std::string_view kAskedTooOften =
    "Not done: the owner has been asked {} times within ten minutes, so the next question has to "
    "wait. Tell the owner what you want to do and why, wait a minute, then repeat.";
constexpr std::string_view kAssistantWaits =
    "Your AI has asked you {} times within ten minutes. Its next question has to wait a minute: {}";
constexpr std::string_view kClientGone =
    "Not done: the request was closed before the action was carried out.";

PaymentGate* sharedGate = nullptr;

HTTPResponse tryAgain(std::string_view message) { return HTTPResponse::error(message, 409); }

PaymentGate::Frame* frameIn(ScreenReading& reading) {
    return std::get_if<PaymentGate::Frame>(&reading);
}

bool unsureSetting(const UserDefaults& defaults) {
    return defaults.boolValue("askWhenUnsure").value_or(true);
}

std::optional<PlaceOnScreen> pointerOf(const GateRoad& road) {
    return road.pointer ? road.pointer() : std::nullopt;
}

std::optional<PlaceOnScreen> placeOf(const PaymentGuard::Action& action) {
    if (!action.x || !action.y) return std::nullopt;
    return PlaceOnScreen{*action.x, *action.y};
}

}  // namespace

// One risky action on the screen on which it was judged.
struct PaymentGate::Question {
    Reason reason;
    GuardedAction guarded;  // as resolved, to be compared with what it is after an approval
    PaymentGuard::Action asked;
    Frame frame;
    std::string what = {};
    TimePoint deadline = {};
};

PaymentGate::PaymentGate(const UserDefaults& defaults, Asker& asker, PaymentLog& log, Clock& clock,
                         PaymentGateOptions options)
    : defaults_(defaults),
      asker_(asker),
      log_(log),
      clock_(clock),
      options_(std::move(options)),
      wider_(options_.words),
      turn_(clock),
      history_(options_.questionsBeforePause),
      wasOn_(isOn(defaults)),
      askedWhenUnsure_(unsureSetting(defaults)) {}

PaymentGate& PaymentGate::shared() {
    assert(sharedGate != nullptr);
    return *sharedGate;
}

void PaymentGate::setShared(PaymentGate* instance) { sharedGate = instance; }

bool PaymentGate::isOn(const UserDefaults& defaults) {
    return defaults.boolValue("askBeforePayments").value_or(true);
}

bool PaymentGate::asksWhenUnsure(const UserDefaults& defaults) {
    return isOn(defaults) && unsureSetting(defaults);
}

double PaymentGate::timeoutSeconds(const std::optional<std::string>& text) {
    double value = kDefaultTimeoutSeconds;
    if (text) {
        double given = 0;
        const char* end = text->data() + text->size();
        const auto [rest, error] = std::from_chars(text->data(), end, given);
        if (error == std::errc() && rest == end && !std::isnan(given)) value = given;
    }
    return std::clamp(value, kShortestTimeoutSeconds, kLongestTimeoutSeconds);
}

HTTPResponse PaymentGate::run(const HTTPRequest& request, const GateRoad& road) {
    const EitherStop withdrawn(request.clientGone, stopped_.get_token());
    const bool on = enabled();
    noticeSwitches(on, unsureSetting(defaults_));
    if (!on) return perform(road, withdrawn, "");

    if (toJudge(request, road)) road.settle();
    const auto deadline = clock_.now() + seconds(options_.timeoutSeconds + kTurnMarginSeconds);
    switch (turn_.take(deadline, withdrawn.token())) {
        case ActionTurn::Outcome::timedOut:
            return tryAgain(kAnotherWaits);
        case ActionTurn::Outcome::stopped:
            return withdrawnReply();
        case ActionTurn::Outcome::taken:
            break;
    }
    const ActionTurn::Holder turn(turn_);
    Decision decision = check(request, road, withdrawn);
    if (decision.refusal) return std::move(*decision.refusal);
    return perform(road, withdrawn, decision.approved);
}

HTTPResponse PaymentGate::perform(const GateRoad& road, const EitherStop& withdrawn,
                                  const std::string& approved) {
    if (!withdrawn.requested()) return road.perform();
    if (!approved.empty()) log_.record("withdrawn", approved);
    return withdrawnReply();
}

std::optional<GuardedAction> PaymentGate::toJudge(const HTTPRequest& request,
                                                  const GateRoad& road) const {
    auto guarded = actionOf(request, road, {});
    if (guarded && guarded->quiet && !sawPaymentLately()) return std::nullopt;
    return guarded;
}

PaymentGate::Decision PaymentGate::check(const HTTPRequest& request, const GateRoad& road,
                                         const EitherStop& withdrawn) {
    const bool recent = sawPaymentLately();
    auto guarded = toJudge(request, road);
    if (!guarded) return {};

    ScreenReading reading = look(road);
    if (const auto* error = std::get_if<Error>(&reading)) return {HTTPResponse::error(*error), ""};
    if (std::holds_alternative<NoFrame>(reading)) {
        if (!recent) return {};
        log_.record("refused",
                    request.path + ": couldn't see the screen right after a payment was showing");
        return {tryAgain(kNoScreenAfterPayment), ""};
    }
    Frame* frame = frameIn(reading);
    if (frame) guarded = actionOf(request, road, frame->screen);
    if (!frame || !guarded || dependsOnUnread(*guarded, *frame)) {
        log_.record("refused", request.path + ": couldn't read the screen");
        return {tryAgain(kUnreadableScreen), ""};
    }
    GuardedAction judged = *guarded;
    auto reason = judge(judged, *frame, pointerOf(road));
    if (!reason) return {};
    return ask(
        {std::move(*reason), std::move(*guarded), std::move(judged.action), std::move(*frame)},
        request, road, withdrawn);
}

std::optional<PaymentGate::Reason> PaymentGate::judge(GuardedAction& guarded, const Frame& frame,
                                                      std::optional<PlaceOnScreen> pointer) const {
    const PaymentGuard::Action anywhere{.kind = PaymentGuard::Kind::tap};
    const auto first = [&](const PaymentGuard::Action& action) -> std::optional<Reason> {
        auto why = PaymentGuard::assess(frame.lines, frame.size, action);
        return why ? std::optional(Reason{std::move(*why), {}}) : std::nullopt;
    };
    const auto second = [&](const PaymentGuard::Action& action) -> std::optional<Reason> {
        auto seen = wider_.assess(frame.lines, frame.size, action);
        return seen ? std::optional(Reason{std::move(seen->why), seen->rule}) : std::nullopt;
    };
    auto reason = first(guarded.action);
    // A click that may land elsewhere, or whose label the pointer may hide, is judged as one on an
    // unlabelled spot, too.
    const bool hidden = !guarded.strays && underPointer(guarded.action, pointer, frame);
    bool elsewhere = false;
    const auto tryElsewhere = [&](const auto& layer) {
        if (reason || (!guarded.strays && !hidden)) return;
        reason = layer(anywhere);
        elsewhere = reason.has_value() && guarded.strays;
    };
    tryElsewhere(first);
    if (!reason && asksWhenUnsure(defaults_)) {
        reason = second(guarded.action);
        tryElsewhere(second);
    }
    if (elsewhere) guarded.action = anywhere;
    return reason;
}

PaymentGuard::Details PaymentGate::paymentOn(const std::vector<std::string>& texts) const {
    return asksWhenUnsure(defaults_) ? wider_.details(texts) : PaymentGuard::details(texts);
}

QuestionHistory::Subject PaymentGate::subjectOf(const Question& question) const {
    const auto texts = question.frame.texts();
    return {question.what, paymentOn(texts).key(), texts};
}

std::optional<HTTPResponse> PaymentGate::heldBack(const Question& question) {
    const auto now = clock_.now();
    const std::string shown = question.what + ": " + paymentOn(question.frame.texts()).summary();
    if (const auto refusal = history_.refusal(subjectOf(question), now)) {
        log_.record("refused", shown + ": denied less than two minutes ago", question.reason.why,
                    question.reason.rule);
        return HTTPResponse::error(*refusal, 403);
    }
    if (!history_.mustWait(now)) return std::nullopt;
    log_.record("refused",
                fmt::format("{}: the assistant has asked {} times within ten minutes", shown,
                            history_.most()),
                question.reason.why, question.reason.rule);
    if (!std::exchange(toldToWait_, true))
        asker_.tell(fmt::format(kAssistantWaits, history_.most(), shown));
    return tryAgain(fmt::format(kAskedTooOften, history_.most()));
}

PaymentGate::Decision PaymentGate::ask(Question question, const HTTPRequest& request,
                                       const GateRoad& road, const EitherStop& withdrawn) {
    question.what = wording(question.asked, question.frame);
    question.deadline = clock_.now() + seconds(options_.timeoutSeconds);
    if (auto refusal = heldBack(question)) return {std::move(refusal), ""};
    for (;;) {
        const auto payment = paymentOn(question.frame.texts());
        const std::string shown = question.what + ": " + payment.summary();
        log_.record("asked", shown, question.reason.why, question.reason.rule);
        history_.asked(clock_.now());
        toldToWait_ = false;
        const auto answer =
            askOwner({payment.title(), question.what, payment.summary(), question.reason.why,
                      question.frame.picture, placeOf(question.asked)},
                     question.deadline, withdrawn);
        if (auto refusal = refusalOf(answer, question, shown, withdrawn))
            return {std::move(refusal), ""};
        if (auto decision = settle(question, request, road, withdrawn)) return std::move(*decision);
    }
}

std::optional<PaymentGate::Decision> PaymentGate::settle(Question& question,
                                                         const HTTPRequest& request,
                                                         const GateRoad& road,
                                                         const EitherStop& withdrawn) {
    const auto approved = paymentOn(question.frame.texts());
    const std::string shown = question.what + ": " + approved.summary();
    ScreenReading reading = look(road);
    Frame* frame = frameIn(reading);
    auto guarded = frame ? actionOf(request, road, frame->screen) : std::nullopt;
    if (withdrawn.requested()) {
        log_.record("withdrawn", shown);
        return Decision{withdrawnReply(), ""};
    }
    if (const auto* error = std::get_if<Error>(&reading)) {
        log_.record("voided", shown + ": " + error->message);
        return Decision{HTTPResponse::error(*error), ""};
    }
    if (!guarded || dependsOnUnread(*guarded, *frame)) {
        log_.record("voided", shown + ": screen not readable after the approval");
        return Decision{tryAgain(kNoScreenAfterApproval), ""};
    }
    const auto now = paymentOn(frame->texts());
    if (now.key() == approved.key() && *guarded == question.guarded) {
        log_.record("approved", shown);
        return Decision{std::nullopt, shown};
    }
    log_.record("voided", fmt::format("{}: approved {}, screen now shows {}", question.what,
                                      approved.summary(), now.summary()));
    if (question.deadline - clock_.now() < kTooLateToAskAgain) {
        return Decision{tryAgain(fmt::format(kChangedAfterApproval, now.summary())), ""};
    }
    const bool elsewhere = *guarded != question.guarded;
    question.guarded = *guarded;
    if (auto reason = judge(*guarded, *frame, pointerOf(road)))
        question.reason = std::move(*reason);
    question.asked = std::move(guarded->action);
    question.frame = std::move(*frame);
    if (elsewhere) question.what = wording(question.asked, question.frame);
    return std::nullopt;
}

std::optional<HTTPResponse> PaymentGate::refusalOf(ApprovalAnswer answer, const Question& question,
                                                   const std::string& shown,
                                                   const EitherStop& withdrawn) {
    if (answer == ApprovalAnswer::deny) {
        log_.record("denied", shown);
        const std::string refusal = fmt::format(kDenied, shown);
        history_.denied(subjectOf(question), refusal, clock_.now());
        return HTTPResponse::error(refusal, 403);
    }
    if (withdrawn.requested()) {
        log_.record("withdrawn", shown);
        return withdrawnReply();
    }
    if (answer == ApprovalAnswer::approve) return std::nullopt;
    log_.record("timed out", shown);
    const int waited = static_cast<int>(options_.timeoutSeconds);
    return HTTPResponse::error(fmt::format(kNotAnswered, waited, shown), 403);
}

ApprovalAnswer PaymentGate::askOwner(const ApprovalRequest& request, TimePoint deadline,
                                     const EitherStop& withdrawn) {
    const auto setAsking = [this](std::optional<TimePoint> until) {
        const MutexLock lock(mutex_);
        askingUntil_ = until;
    };
    setAsking(deadline);
    const ApprovalAnswer answer = asker_.ask(request, deadline, withdrawn.token());
    setAsking(std::nullopt);
    return answer;
}

ScreenReading PaymentGate::look(const GateRoad& road) {
    ScreenReading reading = road.read();
    if (const Frame* frame = frameIn(reading)) saw(frame->texts());
    return reading;
}

std::optional<GuardedAction> PaymentGate::actionOf(const HTTPRequest& request, const GateRoad& road,
                                                   PaymentGuard::FrameSize screen) const {
    return guardedAction(request, screen, pointerOf(road), options_.keyUsage);
}

void PaymentGate::saw(const std::vector<std::string>& texts) {
    const bool known = PaymentGuard::paymentScreen(texts);
    if (!known && !(asksWhenUnsure(defaults_) && wider_.paymentScreen(texts))) return;
    const MutexLock lock(mutex_);
    paymentSeenAt_ = clock_.now();
}

bool PaymentGate::sawPaymentLately() const {
    const MutexLock lock(mutex_);
    return paymentSeenAt_ && clock_.now() - *paymentSeenAt_ < kPaymentIsRecent;
}

std::optional<double> PaymentGate::asking() const {
    const MutexLock lock(mutex_);
    if (!askingUntil_) return std::nullopt;
    return std::max(0.0, toSeconds(*askingUntil_ - clock_.now()));
}

void PaymentGate::stop() { stopped_.request_stop(); }

HTTPResponse PaymentGate::withdrawnReply() const {
    if (stopped_.stop_requested()) return HTTPResponse::error("shutting down", 503);
    return tryAgain(kClientGone);
}

void PaymentGate::noticeSwitches(bool on, bool whenUnsure) {
    bool turned = false;
    bool unsureTurned = false;
    {
        const MutexLock lock(mutex_);
        turned = wasOn_ != on;
        unsureTurned = askedWhenUnsure_ != whenUnsure;
        wasOn_ = on;
        askedWhenUnsure_ = whenUnsure;
    }
    if (turned) log(on ? "Ask me before payments turned on" : "Ask me before payments turned off");
    if (unsureTurned)
        log(whenUnsure ? "Ask me when unsure turned on" : "Ask me when unsure turned off");
}

}  // namespace tandrel
