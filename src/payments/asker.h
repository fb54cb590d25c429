#pragma once

#include <optional>
#include <stop_token>
#include <string>

#include "base/clock.h"
#include "base/pixel_buffer.h"

// Who asks the owner whether a payment may go ahead.
namespace tandrel {

// A place on the phone's screen, as fractions of its width and height from the top left.
struct PlaceOnScreen {
    double x = 0;
    double y = 0;

    bool operator==(const PlaceOnScreen&) const = default;
};

enum class ApprovalAnswer { approve, deny, timeout };

struct ApprovalRequest {
    std::string title;    // the question
    std::string what;     // the action, such as: press Return
    std::string summary;  // what the screen shows
    std::string why;      // what made the guard ask
    // The very picture that was judged, and where on it the action would be; no place for keys and
    // for a click at an unknown place.
    PixelBuffer picture;
    std::optional<PlaceOnScreen> place;
};

class Asker {
 public:
    virtual ~Asker() = default;
    // Asks the owner and blocks until the answer, until `deadline` (of the gate's clock; one in the
    // past is over at once) or until `withdrawn` is requested; the question is off the screen soon
    // after. Without an answer: timeout, and when withdrawn the result counts for nothing. Called
    // on a request's thread, one question at a time.
    virtual ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                               std::stop_token withdrawn) = 0;
    // Tells the owner something that needs no answer. Called on a request's thread; returns at
    // once.
    virtual void tell(const std::string& text) { (void)text; }
};

// Where nobody can be asked: every question runs out unanswered.
class NobodyAsker final : public Asker {
 public:
    explicit NobodyAsker(Clock& clock) : clock_(clock) {}
    ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                       std::stop_token withdrawn) override;

 private:
    Clock& clock_;
};

}  // namespace tandrel
