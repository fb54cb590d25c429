#include <gtest/gtest.h>

#include "gate_fixture.h"

namespace tandrel {
namespace {

class SecondLayerGate : public PaymentGateTest {
 protected:
    static GateFrame cart(const std::string& amount = "25,00 €") {
        return frameOf({"Warenkorb", "Gesamtbetrag", amount, "Zahlungspflichtig bestellen"});
    }
    PaymentGate patient_{defaults_, owner_, log_, clock_, {.timeoutSeconds = 50, .keyUsage = {}}};
};

TEST_F(SecondLayerGate, AsksAndNamesItsRuleInTheLog) {
    screens_ = {cart()};
    EXPECT_EQ(run(tapOnRow(3)).status, 403);
    ASSERT_EQ(owner_.asked.size(), 1u);
    EXPECT_EQ(owner_.asked[0].why, "a payment button (\"Zahlungspflichtig bestellen\")");
    EXPECT_EQ(events()[0],
              "asked: tap “Zahlungspflichtig bestellen”: 25,00 € (a payment button "
              "(\"Zahlungspflichtig bestellen\")) [pay-words]");
    EXPECT_EQ(performed_, 0);
}

TEST_F(SecondLayerGate, ItsAmountsAreNamedAndComparedAfterAnApproval) {
    const auto basket = [](const char* amount) {
        return frameOf({"Koszyk", "Razem", amount, "Kup teraz"});
    };
    owner_.answer({kApprove, kDeny});
    screens_ = {basket("361,99 zł"), basket("961,99 zł")};
    EXPECT_EQ(run(tapOnRow(3)).status, 403);
    ASSERT_EQ(owner_.asked.size(), 2u);
    EXPECT_EQ(owner_.asked[0].title, "Approve a payment of 361,99 zł?");
    EXPECT_EQ(owner_.asked[1].summary, "961,99 zł");
    EXPECT_EQ(performed_, 0);
    // Without the second layer its amounts are unknown, too.
    defaults_.whenUnsure = false;
    screens_ = {frameOf({"Pay now", "361,99 zł"})};
    owner_.answer({kDeny});
    run(tapOnRow(0));
    EXPECT_EQ(owner_.asked.back().summary, "no amount shown");
}

TEST_F(SecondLayerGate, ItsScreensMakeTypingBeChecked) {
    screens_ = {frameOf({"Überweisung", "25,00 €", "Empfänger", "pushTAN eingeben"})};
    EXPECT_EQ(run(type("123456")).status, 200);  // nothing seen yet
    gate_.saw(std::get<GateFrame>(screens_.front()).texts());
    EXPECT_EQ(run(type("123456")).status, 403);
    EXPECT_EQ(performed_, 1);
}

TEST_F(SecondLayerGate, IsOffWhenTheOwnerSaysSo) {
    screens_ = {cart()};
    defaults_.whenUnsure = false;
    EXPECT_EQ(run(tapOnRow(3)).status, 200);
    screens_ = {transfer()};
    EXPECT_EQ(run(tapOnRow(4)).status, 403);  // the first layer still asks
    defaults_.whenUnsure = true;
    defaults_.ask = false;
    screens_ = {cart()};
    EXPECT_EQ(run(tapOnRow(3)).status, 200);
    EXPECT_EQ(owner_.asked.size(), 1u);
    EXPECT_EQ(performed_, 2);
}

TEST_F(SecondLayerGate, WhatWasDeniedIsRefusedForTwoMinutes) {
    screens_ = {transfer()};
    const auto first = run(tapOnRow(4));
    clock_.advance(std::chrono::seconds(119));
    auto again = transfer();
    again.lines[2].text = "Arnount";  // a letter read otherwise
    screens_ = {again};
    const auto second = run(tapOnRow(4));
    EXPECT_EQ(second.status, 403);
    EXPECT_EQ(second.error, first.error);
    EXPECT_EQ(owner_.asked.size(), 1u);
    EXPECT_EQ(events().back(),
              "refused: tap “Confirm”: €25.00 to Ilse Varga: denied less than two minutes ago "
              "(\"Confirm\" on a payment screen showing €25.00)");
    clock_.advance(std::chrono::seconds(1));
    run(tapOnRow(4));
    EXPECT_EQ(owner_.asked.size(), 2u);
    EXPECT_EQ(performed_, 0);
}

TEST_F(SecondLayerGate, AnotherPaymentOrAnotherActionIsAskedAbout) {
    screens_ = {transfer()};
    run(tapOnRow(4));
    run(key("Return"));
    EXPECT_EQ(owner_.asked.size(), 2u);
    screens_ = {transfer("€26.00")};
    run(tapOnRow(4));
    EXPECT_EQ(owner_.asked.size(), 3u);
    screens_ = {frameOf({"Recipient", "Ilse Varga", "Rent", "€25.00", "Confirm", "June", "Memo",
                         "Flat 4", "Deposit"})};
    run(tap(0.5, 470.0 / 1300));
    EXPECT_EQ(owner_.asked.size(), 4u);
}

TEST_F(SecondLayerGate, AQuestionWithoutAnAnswerMayBeAskedAgain) {
    owner_.answer({kTimeout, kApprove});
    screens_ = {transfer()};
    EXPECT_EQ(run(tapOnRow(4)).status, 403);
    EXPECT_EQ(run(tapOnRow(4)).status, 200);
    EXPECT_EQ(performed_, 1);
}

TEST_F(SecondLayerGate, AnApprovalIsSpentByOneAction) {
    owner_.answer({kApprove, kDeny, kDeny, kDeny});
    screens_ = {transfer()};
    for (int i = 0; i < 4; ++i) run(tapOnRow(4));
    EXPECT_EQ(performed_, 1);
    EXPECT_EQ(owner_.asked.size(), 2u);  // the third and fourth repeat what was denied
}

TEST_F(SecondLayerGate, AfterTenQuestionsTheNextOnesWaitAMinute) {
    const auto ask = [&](const std::string& amount) {
        screens_ = {transfer(amount)};
        const auto response = patient_.run(tapOnRow(4), road());
        return response.status;
    };
    owner_.react = [](const auto&, auto) { return kTimeout; };
    for (int i = 0; i < 10; ++i) EXPECT_EQ(ask("€" + std::to_string(i + 1) + ".00"), 403);
    EXPECT_EQ(ask("€11.00"), 409);
    EXPECT_EQ(ask("€11.00"), 409);
    EXPECT_EQ(owner_.asked.size(), 10u);
    EXPECT_EQ(owner_.told, std::vector<std::string>{
                               "Your AI has asked you 10 times within ten minutes. Its next "
                               "question has to wait a minute: tap “Confirm”: €11.00 to Ilse "
                               "Varga"});
    EXPECT_EQ(events().back(),
              "refused: tap “Confirm”: €11.00 to Ilse Varga: the assistant has asked 10 times "
              "within ten minutes (\"Confirm\" on a payment screen showing €11.00)");
    screens_ = {article()};
    EXPECT_EQ(patient_.run(tapOnRow(1), road()).status, 200);  // what needs no question goes on

    clock_.advance(std::chrono::seconds(59));
    EXPECT_EQ(ask("€11.00"), 409);
    clock_.advance(std::chrono::seconds(1));
    EXPECT_EQ(ask("€11.00"), 403);
    EXPECT_EQ(ask("€12.00"), 409);  // each further one waits
    clock_.advance(std::chrono::minutes(10));
    for (int i = 0; i < 10; ++i) EXPECT_EQ(ask("€" + std::to_string(i + 1) + ".00"), 403);
    EXPECT_EQ(owner_.asked.size(), 21u);
}

}  // namespace
}  // namespace tandrel
