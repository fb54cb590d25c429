#pragma once

#include <atomic>
#include <deque>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>

#include "payments/payment_gate.h"
#include "support/manual_clock.h"
#include "support/temporary_folder.h"

namespace tandrel {

inline constexpr auto kApprove = ApprovalAnswer::approve;
inline constexpr auto kDeny = ApprovalAnswer::deny;
inline constexpr auto kTimeout = ApprovalAnswer::timeout;

// What the log says of a tap on the transfer screen's button.
inline constexpr const char* kAsked =
    "asked: tap “Confirm”: €25.00 to Ilse Varga (\"Confirm\" on a payment screen showing €25.00)";

class FakeDefaults final : public UserDefaults {
 public:
    std::optional<bool> boolValue(std::string_view key) const override {
        if (key == "askWhenUnsure") return whenUnsure.load();
        return key == "askBeforePayments" ? ask.load() : std::nullopt;
    }
    std::optional<std::string> textValue(std::string_view) const override { return std::nullopt; }
    Result<void> set(std::string_view, bool) override { return {}; }
    Result<void> set(std::string_view, std::string) override { return {}; }

    std::atomic<bool> whenUnsure = true;
    std::atomic<std::optional<bool>> ask;
};

// An owner who does what the test says.
class FakeOwner final : public Asker {
 public:
    using Reaction = std::function<ApprovalAnswer(const ApprovalRequest&, std::stop_token)>;

    Reaction react = [](const auto&, auto) { return ApprovalAnswer::deny; };
    std::vector<ApprovalRequest> asked;
    std::vector<TimePoint> deadlines;
    std::vector<std::string> told;

    void answer(std::deque<ApprovalAnswer> answers) {
        react = [answers](const auto&, auto) mutable {
            const auto next = answers.at(0);
            answers.pop_front();
            return next;
        };
    }
    ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                       std::stop_token withdrawn) override {
        asked.push_back(request);
        deadlines.push_back(deadline);
        return react(request, withdrawn);
    }
    void tell(const std::string& text) override { told.push_back(text); }
};

inline GateFrame frameOf(const std::vector<std::string>& texts) {
    GateFrame frame;
    frame.size = {600, 1300};
    frame.screen = {1206, 2613};
    frame.picture = PixelBuffer::make(600, 1300, [](std::uint8_t*, int) {});
    for (const auto& text : texts) {
        const double y = 100.0 * static_cast<double>(frame.lines.size()) + 50;
        frame.lines.push_back({text, 100, y, 400, 40});
    }
    return frame;
}

// A gate with a real log, between a fake owner and a phone that shows the frames of `screens_` one
// after another, the last again and again.
class PaymentGateTest : public testing::Test {
 protected:
    const TemporaryFolder folder_;
    ManualClock clock_;
    FakeDefaults defaults_;
    FakeOwner owner_;
    PaymentLog log_{folder_.path() / "approvals.jsonl", clock_};
    PaymentGate gate_{defaults_,
                      owner_,
                      log_,
                      clock_,
                      {.timeoutSeconds = 50, .keyUsage = {}, .questionsBeforePause = 100}};

    std::deque<ScreenReading> screens_;
    std::function<void()> onRead_ = [] {};
    std::optional<PlaceOnScreen> pointer_;
    int reads_ = 0;
    std::atomic<int> performed_ = 0;

    static GateFrame article() { return frameOf({"Markets", "Oil slips to $71.20"}); }
    static GateFrame transfer(const std::string& amount = "€25.00") {
        return frameOf({"Recipient", "Ilse Varga", "Amount", amount, "Confirm"});
    }

    static HTTPRequest post(const std::string& path, const Json& body) {
        return {.method = "POST", .path = path, .query = {}, .body = body, .clientGone = {}};
    }
    static HTTPRequest tap(double x, double y) {
        return post("/tap", {{"x", x}, {"y", y}, {"fraction", true}});
    }
    // A tap on one of the lines of `frameOf`.
    static HTTPRequest tapOnRow(int row) { return tap(0.5, (100.0 * row + 70) / 1300); }
    static HTTPRequest type(const std::string& text) { return post("/type", {{"text", text}}); }
    static HTTPRequest key(const std::string& name) { return post("/key", {{"key", name}}); }

    GateRoad road() {
        return {.read =
                    [this] {
                        ++reads_;
                        onRead_();
                        ScreenReading next = screens_.front();
                        if (screens_.size() > 1) screens_.pop_front();
                        return next;
                    },
                .perform =
                    [this] {
                        ++performed_;
                        return HTTPResponse::json({{"ok", true}});
                    },
                .pointer = [this] { return pointer_; }};
    }

    struct Reply {
        int status;
        std::string error;
        bool operator==(const Reply&) const = default;
        friend void PrintTo(const Reply& reply, std::ostream* out) {
            *out << reply.status << " " << reply.error;
        }
    };
    Reply run(const HTTPRequest& request) {
        const auto response = gate_.run(request, road());
        const auto body = parseJson(toText(response.body));
        return {response.status, textMember(*body, "error").value_or("")};
    }

    // The approvals log as "event: detail (why) [rule]" lines.
    std::vector<std::string> events() {
        log_.flush();
        std::vector<std::string> result;
        std::ifstream file(folder_.path() / "approvals.jsonl");
        for (std::string line; std::getline(file, line);) {
            const Json entry = Json::parse(line);
            result.push_back(
                entry["event"].get<std::string>() + ": " + entry["detail"].get<std::string>() +
                (entry.contains("why") ? " (" + entry["why"].get<std::string>() + ")" : "") +
                (entry.contains("rule") ? " [" + entry["rule"].get<std::string>() + "]" : ""));
        }
        return result;
    }
};

}  // namespace tandrel
