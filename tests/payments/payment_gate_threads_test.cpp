#include <latch>
#include <semaphore>
#include <set>
#include <thread>

#include "payments/gate_fixture.h"

namespace tandrel {
namespace {

using testing::ElementsAre;

constexpr const char* kGone = "Not done: the request was closed before the action was carried out.";
constexpr const char* kWithdrawn = "withdrawn: tap “Confirm”: €25.00 to Ilse Varga";

// A client whose connection the test closes.
class WithdrawnTest : public PaymentGateTest {
 protected:
    std::stop_source client_;

    HTTPRequest tapByClient(int row) {
        HTTPRequest request = tapOnRow(row);
        request.clientGone = client_.get_token();
        return request;
    }
    void expectNotDone(const Reply& reply) {
        EXPECT_EQ(reply, (Reply{409, kGone}));
        EXPECT_EQ(performed_, 0);
    }
};

TEST_F(WithdrawnTest, BeforeItsTurn) {
    screens_ = {article()};
    client_.request_stop();
    expectNotDone(run(tapByClient(0)));
    EXPECT_EQ(reads_, 0);
}

TEST_F(WithdrawnTest, WithTheGuardOff) {
    defaults_.ask = false;
    client_.request_stop();
    expectNotDone(run(tapByClient(0)));
}

TEST_F(WithdrawnTest, DuringTheLook) {
    screens_ = {article()};
    onRead_ = [this] { client_.request_stop(); };
    expectNotDone(run(tapByClient(0)));
    EXPECT_THAT(events(), testing::IsEmpty());
}

TEST_F(WithdrawnTest, WhileTheOwnerIsAsked) {
    screens_ = {transfer()};
    owner_.react = [this](const auto&, std::stop_token withdrawn) {
        EXPECT_FALSE(withdrawn.stop_requested());
        client_.request_stop();
        EXPECT_TRUE(withdrawn.stop_requested());
        return ApprovalAnswer::timeout;
    };
    expectNotDone(run(tapByClient(4)));
    EXPECT_THAT(events(), ElementsAre(kAsked, kWithdrawn));
}

TEST_F(WithdrawnTest, AnApprovalThatCrossesItCountsForNothing) {
    screens_ = {transfer()};
    owner_.react = [this](const auto&, auto) {
        client_.request_stop();
        return ApprovalAnswer::approve;
    };
    expectNotDone(run(tapByClient(4)));
    EXPECT_EQ(reads_, 1);
    EXPECT_THAT(events(), ElementsAre(kAsked, kWithdrawn));
}

TEST_F(WithdrawnTest, DuringTheSecondLook) {
    screens_ = {transfer()};
    owner_.answer({ApprovalAnswer::approve});
    onRead_ = [this] {
        if (reads_ == 2) client_.request_stop();
    };
    expectNotDone(run(tapByClient(4)));
    EXPECT_THAT(events(), ElementsAre(kAsked, kWithdrawn));
}

// --- two actions at once

class TwoActionsTest : public PaymentGateTest {
 protected:
    std::binary_semaphore asking_{0};
    std::binary_semaphore answer_{0};
    std::jthread first_;

    // A first action whose question stays open until `answer_`.
    void openQuestion() {
        screens_ = {transfer()};
        owner_.react = [this](const auto&, auto) {
            asking_.release();
            answer_.acquire();
            return ApprovalAnswer::deny;
        };
        first_ = std::jthread([this] { run(tapOnRow(4)); });
        asking_.acquire();
    }
};

TEST_F(TwoActionsTest, TheSecondWaitsNoLongerThanTheFirstCanTake) {
    openQuestion();
    EXPECT_NEAR(gate_.asking().value(), 50, 0.001);
    std::atomic<bool> replied = false;
    std::jthread second([&] {
        EXPECT_EQ(run(post("/home", Json::object())),
                  (Reply{409,
                         "Not done: Tandrel is still waiting for the owner to answer a payment "
                         "request. Try again in a minute."}));
        replied = true;
    });
    const auto start = clock_.now();
    while (!replied) {
        clock_.advance(std::chrono::seconds(1));
        std::this_thread::yield();
    }
    EXPECT_GE(clock_.now() - start, std::chrono::seconds(65));
    second.join();
    EXPECT_EQ(performed_, 0);
    answer_.release();
    first_.join();
    EXPECT_EQ(gate_.asking(), std::nullopt);
    EXPECT_EQ(run(post("/home", Json::object())).status, 200);
}

TEST_F(TwoActionsTest, AWaitingActionLeavesWithItsClient) {
    openQuestion();
    std::stop_source client;
    HTTPRequest request = post("/home", Json::object());
    request.clientGone = client.get_token();
    std::jthread second([&] { EXPECT_EQ(run(request).error, kGone); });
    client.request_stop();
    second.join();
    EXPECT_EQ(performed_, 0);
    answer_.release();
}

TEST_F(TwoActionsTest, StoppingSendsEveryoneAway) {
    screens_ = {transfer()};
    NobodyAsker nobody(clock_);
    PaymentGate gate(defaults_, nobody, log_, clock_, {});
    const auto expectShuttingDown = [&] {
        const auto response = gate.run(tapOnRow(4), road());
        EXPECT_EQ(response.status, 503);
        EXPECT_EQ(toText(response.body), R"({"error":"shutting down"})");
    };
    std::jthread first(expectShuttingDown);
    clock_.awaitSleepers(1);
    std::jthread second(expectShuttingDown);
    gate.stop();
    first.join();
    second.join();
    EXPECT_THAT(events(), ElementsAre(kAsked, kWithdrawn));
    EXPECT_EQ(performed_, 0);
}

TEST_F(TwoActionsTest, WhereNobodyCanAnswerTheTimeRunsOut) {
    screens_ = {transfer()};
    NobodyAsker nobody(clock_);
    PaymentGate gate(defaults_, nobody, log_, clock_, {.timeoutSeconds = 3.9, .keyUsage = {}});
    std::jthread asking([&] {
        const auto response = gate.run(tapOnRow(4), road());
        EXPECT_EQ(response.status, 403);
        EXPECT_NE(toText(response.body).find("within 3 seconds"), std::string::npos);
    });
    clock_.awaitSleepers(1);
    clock_.advance(std::chrono::milliseconds(3899));
    clock_.awaitSleepers(1);
    clock_.advance(std::chrono::milliseconds(1));
}

// 32 clients at once, each before its own screen: what arrives on the phone is what was approved,
// one at a time.
TEST_F(PaymentGateTest, ExactlyTheApprovedOnesArePerformed) {
    constexpr int kClients = 32;
    owner_.react = [](const ApprovalRequest& request, auto) {
        return request.summary.ends_with("0") ? ApprovalAnswer::approve : ApprovalAnswer::deny;
    };
    std::set<int> touched;
    std::atomic<int> inside = 0;
    std::latch together(kClients);
    {
        std::vector<std::jthread> clients;
        for (int i = 0; i < kClients; ++i) {
            clients.emplace_back([&, i] {
                const GateFrame frame = frameOf({"Total €" + std::to_string(i), "Pay now"});
                const GateRoad road{.read =
                                        [&] {
                                            EXPECT_EQ(++inside, 1);
                                            --inside;
                                            return ScreenReading(frame);
                                        },
                                    .perform =
                                        [&, i] {
                                            EXPECT_EQ(++inside, 1);
                                            touched.insert(i);
                                            --inside;
                                            return HTTPResponse::json({{"ok", true}});
                                        },
                                    .pointer = {}};
                together.arrive_and_wait();
                EXPECT_EQ(gate_.run(tapOnRow(1), road).status, i % 10 == 0 ? 200 : 403);
            });
        }
    }
    EXPECT_EQ(touched, (std::set<int>{0, 10, 20, 30}));
}

}  // namespace
}  // namespace tandrel
