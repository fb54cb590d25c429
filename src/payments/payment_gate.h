#pragma once

#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "http/message.h"
#include "payments/action_turn.h"
#include "payments/asker.h"
#include "payments/either_stop.h"
#include "payments/gate_road.h"
#include "payments/guarded_action.h"
#include "payments/payment_log.h"
#include "payments/question_history.h"
#include "payments/wider_guard.h"
#include "platform/user_defaults.h"

namespace tandrel {

struct PaymentGateOptions {
    // How long the owner has to answer.
    double timeoutSeconds = 50;
    // How the keyboard finds the key of a name. Without it, only the names "enter", "return" and
    // "space" are known.
    KeyUsage keyUsage;
    // What the second layer knows.
    std::shared_ptr<const PaymentGuard::GuardWords> words = PaymentGuard::GuardWords::builtIn();
    // So many questions within ten minutes make each further one wait a minute.
    std::size_t questionsBeforePause = 10;
};

// Stands between the routes and the phone: an action that could pay is carried out only after the
// owner has approved it, and only on the screen that the owner approved. One action at a time goes
// through, so that nothing moves on the phone between an approval and its action. Any thread; what
// is given to the constructor outlives the gate, and every `run` has returned before it goes.
class PaymentGate {
 public:
    using Frame = GateFrame;

    PaymentGate(const UserDefaults& defaults, Asker& asker, PaymentLog& log, Clock& clock,
                PaymentGateOptions options);

    // The instance that the wiring built.
    static PaymentGate& shared();
    static void setShared(PaymentGate* instance);

    // Carries the action out and returns its reply, or the refusal for the assistant: 403 when the
    // owner said no or nothing, 409 when the assistant should read the screen and try again, 503
    // after `stop`. Blocks for as long as the owner is asked. An action whose client has gone is
    // never carried out.
    HTTPResponse run(const HTTPRequest& request, const GateRoad& road);

    // The texts of a screen that was read for the assistant: one on which something is paid makes
    // the next 120 seconds' typing be checked.
    void saw(const std::vector<std::string>& texts);

    // Whether the owner wants to be asked: unless "askBeforePayments" is set to false.
    static bool isOn(const UserDefaults& defaults);
    bool enabled() const { return isOn(defaults_); }
    // Whether the second layer asks, too: unless "askWhenUnsure" is set to false. Without the first
    // there is no second.
    static bool asksWhenUnsure(const UserDefaults& defaults);

    // The owner's time to answer: the text as a decimal number, 50 when it is absent or not one;
    // between 3 and 120.
    static double timeoutSeconds(const std::optional<std::string>& text);

    // The seconds left of the question that is open now.
    std::optional<double> asking() const;

    // Withdraws an open question and sends away everyone who waits, now and later. To be called
    // before the threads that may be in `run` are joined.
    void stop();

 private:
    // What became of a request before it may be carried out.
    struct Decision {
        std::optional<HTTPResponse> refusal;
        std::string approved;  // what the owner approved; empty when the owner was not asked
    };
    struct Question;
    // Why the owner must be asked.
    struct Reason {
        std::string why;
        std::string_view rule;  // of the second layer; empty when the first one saw it
    };

    // The steps of `run`: may the request go ahead; the owner's dialogue about it; what an approval
    // is worth on the screen as it is by then, where none means that it must be asked again.
    HTTPResponse perform(const GateRoad& road, const EitherStop& withdrawn,
                         const std::string& approved);
    Decision check(const HTTPRequest& request, const GateRoad& road, const EitherStop& withdrawn);
    Decision ask(Question question, const HTTPRequest& request, const GateRoad& road,
                 const EitherStop& withdrawn);
    std::optional<Decision> settle(Question& question, const HTTPRequest& request,
                                   const GateRoad& road, const EitherStop& withdrawn);
    std::optional<HTTPResponse> refusalOf(ApprovalAnswer answer, const Question& question,
                                          const std::string& shown, const EitherStop& withdrawn);
    ApprovalAnswer askOwner(const ApprovalRequest& request, TimePoint deadline,
                            const EitherStop& withdrawn);

    // The reason and the action that it is about: a click that may land elsewhere is judged as one
    // on an unlabelled spot, too.
    std::optional<Reason> judge(GuardedAction& guarded, const Frame& frame,
                                std::optional<PlaceOnScreen> pointer) const;
    // What the screen says about the payment, as far as the layers that are on know.
    PaymentGuard::Details paymentOn(const std::vector<std::string>& texts) const;
    QuestionHistory::Subject subjectOf(const Question& question) const;
    // The reply to a question that is not put to the owner again, or not yet.
    std::optional<HTTPResponse> heldBack(const Question& question);

    ScreenReading look(const GateRoad& road);
    std::optional<GuardedAction> actionOf(const HTTPRequest& request, const GateRoad& road,
                                          PaymentGuard::FrameSize screen) const;
    // The action, unless it may go ahead without a look at the screen.
    std::optional<GuardedAction> toJudge(const HTTPRequest& request, const GateRoad& road) const;
    bool sawPaymentLately() const;
    HTTPResponse withdrawnReply() const;
    void noticeSwitches(bool on, bool whenUnsure);

    const UserDefaults& defaults_;
    Asker& asker_;
    PaymentLog& log_;
    Clock& clock_;
    const PaymentGateOptions options_;
    std::stop_source stopped_;
    const PaymentGuard::WiderGuard wider_;
    ActionTurn turn_;
    // Both of whoever has the turn.
    QuestionHistory history_;
    bool toldToWait_ = false;  // the owner knows that the assistant has to wait

    mutable Mutex mutex_;
    std::optional<TimePoint> paymentSeenAt_ OWNED_BY(mutex_);
    std::optional<TimePoint> askingUntil_ OWNED_BY(mutex_);
    bool wasOn_ OWNED_BY(mutex_);
    bool askedWhenUnsure_ OWNED_BY(mutex_);
};

}  // namespace tandrel
