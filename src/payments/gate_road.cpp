#include "payments/gate_road.h"

#include <fmt/format.h>

#include "base/log.h"

namespace tandrel {

ScreenReading screenReading(PixelBuffer picture, Result<ReadText> text,
                            PaymentGuard::FrameSize screen) {
    if (!text) {
        log("payment guard: couldn't read the frame: " + text.error().message);
        return Unreadable{};
    }
    std::size_t length = 0;
    for (const auto& record : text->records) length += record.text.size() + 1;
    if (length > kMostGuardText) {
        log(fmt::format("payment guard: {} bytes of text on one screen", length));
        return Unreadable{};
    }
    GateFrame frame;
    frame.size = {static_cast<double>(picture.width()), static_cast<double>(picture.height())};
    frame.screen = screen;
    frame.unread = std::move(text->unread);
    frame.picture = std::move(picture);
    std::erase_if(text->records, [&](const TextRecord& record) {
        if (record.text.size() <= kLongestGuardLine) return false;
        frame.unread.push_back({record.x, record.y, record.width, record.height});
        return true;
    });
    frame.lines = PaymentGuard::lines(PaymentGuard::keepingAmounts(std::move(text->records)));
    return frame;
}

}  // namespace tandrel
