#pragma once

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "app/engine_report.h"
#include "base/clock.h"
#include "base/json.h"
#include "base/pixel_buffer.h"

namespace tandrel {

// The phone test's access to the phone: the engine's own API, as an assistant uses it. Blocks; any
// thread.
class TryIt {
 public:
    // `device` names one of several phones; empty for the only one.
    TryIt(EnginePlace place, Clock& clock, std::string device = {}, std::stop_token stop = {})
        : place_(std::move(place)),
          clock_(clock),
          device_(std::move(device)),
          stop_(std::move(stop)) {}

    using Problem = std::string;  // in the owner's words

    // Posts one action. Nothing on success.
    std::optional<Problem> act(const std::string& path, Json body) const;
    // Home by its own key and by the keyboard's shortcut, for a phone that ignores one of them.
    std::optional<Problem> home() const;

    struct Frame {
        PixelBuffer image;
        std::vector<std::string> texts;  // empty when they were not asked for
    };
    enum class From { cable, airplay };
    // AirPlay when that is where the picture comes from or what the owner chose.
    static From preferred(const AppModelInputs& inputs);
    enum class Text { unread, read };
    // The phone's screen, its longer side at most `maxEdge` pixels.
    std::optional<Frame> frame(From from, int maxEdge, Text text) const;

    // False when the test was stopped meanwhile.
    bool wait(Duration duration) const;
    bool stopped() const { return stop_.stop_requested(); }

 private:
    std::optional<Frame> cableFrame(int maxEdge, Text text) const;
    std::optional<Frame> airplayFrame(int maxEdge, Text text) const;

    const EnginePlace place_;
    Clock& clock_;
    const std::string device_;
    const std::stop_token stop_;
};

}  // namespace tandrel
