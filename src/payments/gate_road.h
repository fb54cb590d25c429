#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/pixel_buffer.h"
#include "base/result.h"
#include "http/message.h"
#include "payments/asker.h"
#include "payments/payment_guard.h"
#include "platform/text_recognizer.h"

// What the payment gate gets from whoever carries actions out: the road of one action, which ends
// at one phone.
namespace tandrel {

// One look at the phone's screen.
struct GateFrame {
    std::vector<PaymentGuard::Line> lines;  // boxes in pixels of the picture
    PaymentGuard::FrameSize size;           // of the picture
    // Of the phone's screen, which the API's pixels count; it differs from `size` when the picture
    // is scaled. Zero where the API knows fractions only.
    PaymentGuard::FrameSize screen;
    std::vector<UnreadArea> unread;  // in pixels of the picture
    PixelBuffer picture;             // the phone's picture alone, without bars beside it

    std::vector<std::string> texts() const { return PaymentGuard::texts(lines); }
};

struct NoFrame {};     // the phone has no picture
struct Unreadable {};  // there is a picture, but nothing is known about its text

// An error means that the picture must not be judged for this phone, such as when the phone has
// changed since the action was resolved; it becomes the reply.
using ScreenReading = std::variant<GateFrame, NoFrame, Unreadable, Error>;

// What the recogniser made of the picture. Records beyond what a screen can hold count as unread.
ScreenReading screenReading(PixelBuffer picture, Result<ReadText> text,
                            PaymentGuard::FrameSize screen);

// The limits of that, in bytes: far above any real screen, and low enough that judging ends soon.
inline constexpr std::size_t kLongestGuardLine = 500;
inline constexpr std::size_t kMostGuardText = 32u << 10;

struct GateRoad {
    // Blocks until the phone's picture shows what the action before this one did. Called before the
    // action takes its turn, so that those on other phones need not wait for it.
    std::function<void()> settle = [] {};
    // Looks at the phone's screen now. May take as long as text recognition.
    std::function<ScreenReading()> read;
    // Carries the action out on the same phone, or says in the reply why not.
    std::function<HTTPResponse()> perform;
    // Where that phone's pointer is; none when that is not known.
    std::function<std::optional<PlaceOnScreen>()> pointer;
};

}  // namespace tandrel
