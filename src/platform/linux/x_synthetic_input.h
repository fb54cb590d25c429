#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/x_connection.h"
#include "platform/synthetic_input.h"

namespace tandrel {

// The display's pointer and keyboard, driven through XTEST.
class XSyntheticInput final : public SyntheticInput {
 public:
    // The error says why there is none.
    static Result<std::unique_ptr<SyntheticInput>> open();

    Result<void> click(DesktopPoint at) override;
    Result<void> drag(DesktopPoint from, DesktopPoint to, Duration duration) override;
    Result<void> type(std::string_view text) override;
    Result<void> key(std::string_view key, const std::vector<std::string>& modifiers) override;
    Result<void> activate(std::uint32_t window) override;

 private:
    explicit XSyntheticInput(std::unique_ptr<XConnection> x) : x_(std::move(x)) {}

    struct Stroke {
        xcb_keycode_t code = 0;
        bool isShifted = false;
    };
    std::optional<Stroke> findStroke(std::uint32_t keysym) const;
    Result<Stroke> lendStroke(std::uint32_t keysym) const;
    Result<void> press(std::uint32_t keysym, const std::vector<std::uint32_t>& modifiers) const;
    void fake(std::uint8_t type, std::uint8_t detail, DesktopPoint at = {}) const;
    Result<void> finish() const;
    Result<void> point(DesktopPoint at) const;
    XReply<xcb_get_window_attributes_reply_t> attributes(xcb_window_t window) const;
    xcb_window_t topLevelOf(xcb_window_t window) const;
    void requestActivation(xcb_window_t window, xcb_atom_t active) const;
    bool await(const std::function<bool()>& fits) const;
    Result<void> awaitActive(xcb_window_t window, xcb_atom_t active) const;

    const std::unique_ptr<XConnection> x_;
    xcb_window_t active_ = XCB_NONE;
};

}  // namespace tandrel
