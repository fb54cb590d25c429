#include "payments/payment_gate.h"

#include "payments/gate_fixture.h"

namespace tandrel {
namespace {

using testing::ElementsAre;

constexpr const char* kUnreadable =
    "Not done: Tandrel can't read the iPhone's screen right now, so it can't check this action. "
    "Read the screen again (screenshot) and repeat.";
constexpr const char* kNoScreenAfterPayment =
    "Not done: the iPhone was showing a payment a moment ago and Tandrel can't see its screen "
    "right now, so it can't check this action. Read the screen again (screenshot) and repeat.";

TEST_F(PaymentGateTest, AHarmlessActionIsPerformedUnasked) {
    screens_ = {article()};
    EXPECT_EQ(run(tapOnRow(0)).status, 200);
    EXPECT_EQ(performed_, 1);
    EXPECT_EQ(reads_, 1);
    EXPECT_THAT(events(), testing::IsEmpty());
}

TEST_F(PaymentGateTest, TheOwnerSeesWhatWouldBeTapped) {
    screens_ = {transfer()};
    run(tapOnRow(4));
    ASSERT_EQ(owner_.asked.size(), 1u);
    const auto& request = owner_.asked[0];
    EXPECT_EQ(request.title, "Approve €25.00 to Ilse Varga?");
    EXPECT_EQ(request.what, "tap “Confirm”");
    EXPECT_EQ(request.summary, "€25.00 to Ilse Varga");
    EXPECT_EQ(request.why, "\"Confirm\" on a payment screen showing €25.00");
    EXPECT_TRUE(request.picture.sharesPixelsWith(std::get<GateFrame>(screens_[0]).picture));
    EXPECT_EQ(request.place, (PlaceOnScreen{0.5, 470.0 / 1300}));
    EXPECT_EQ(owner_.deadlines[0], clock_.now() + std::chrono::seconds(50));

    run(key("return"));
    EXPECT_EQ(owner_.asked[1].what, "press Return");
    EXPECT_EQ(owner_.asked[1].place, std::nullopt);
}

TEST_F(PaymentGateTest, ADenialIsFinal) {
    screens_ = {transfer()};
    EXPECT_EQ(
        run(tapOnRow(4)),
        (Reply{
            403,
            "The owner denied this on their Mac (tap “Confirm”: €25.00 to Ilse Varga). Don't retry "
            "this payment."}));
    EXPECT_EQ(performed_, 0);
    EXPECT_EQ(reads_, 1);
    EXPECT_THAT(events(), ElementsAre(kAsked, "denied: tap “Confirm”: €25.00 to Ilse Varga"));
}

TEST_F(PaymentGateTest, NoAnswerCountsAsNo) {
    screens_ = {transfer()};
    owner_.answer({kTimeout});
    EXPECT_EQ(
        run(tapOnRow(4)),
        (Reply{
            403,
            "Not done: the owner didn't answer the payment request on their Mac within 50 seconds "
            "(tap “Confirm”: €25.00 to Ilse Varga), so it counts as a no. Repeat the action only "
            "if the owner asks you to."}));
    EXPECT_EQ(performed_, 0);
    EXPECT_THAT(events(), ElementsAre(kAsked, "timed out: tap “Confirm”: €25.00 to Ilse Varga"));
}

TEST_F(PaymentGateTest, AnApprovalHoldsForTheScreenThatWasApproved) {
    screens_ = {transfer(), transfer("€ 25.00")};  // the same payment, read a little differently
    owner_.answer({kApprove});
    EXPECT_EQ(run(tapOnRow(4)).status, 200);
    EXPECT_EQ(performed_, 1);
    EXPECT_EQ(reads_, 2);
    EXPECT_THAT(events(), ElementsAre(kAsked, "approved: tap “Confirm”: €25.00 to Ilse Varga"));
}

// Known limit: what is compared is the payment, not the label under the point.
TEST_F(PaymentGateTest, AnotherLabelForTheSamePaymentIsTheSame) {
    screens_ = {transfer(), frameOf({"Recipient", "Ilse Varga", "Amount", "€25.00", "Delete"})};
    owner_.answer({kApprove});
    EXPECT_EQ(run(tapOnRow(4)).status, 200);
}

TEST_F(PaymentGateTest, AChangedPaymentIsAskedAgain) {
    screens_ = {transfer(), transfer("€2,500.00")};
    owner_.answer({kApprove, kApprove});
    EXPECT_EQ(run(tapOnRow(4)).status, 200);
    EXPECT_EQ(performed_, 1);
    EXPECT_EQ(owner_.asked[1].summary, "€2,500.00 to Ilse Varga");
    EXPECT_EQ(owner_.deadlines[1], owner_.deadlines[0]);
    EXPECT_THAT(
        events(),
        ElementsAre(
            kAsked,
            "voided: tap “Confirm”: approved €25.00 to Ilse Varga, screen now shows "
            "€2,500.00 to Ilse Varga",
            "asked: tap “Confirm”: €2,500.00 to Ilse Varga (\"Confirm\" on a payment screen "
            "showing €2,500.00)",
            "approved: tap “Confirm”: €2,500.00 to Ilse Varga"));
}

TEST_F(PaymentGateTest, AChangedPaymentThatIsHarmlessByNowIsAskedAllTheSame) {
    screens_ = {transfer(), article()};
    owner_.answer({kApprove, kDeny});
    EXPECT_EQ(run(tapOnRow(4)).status, 403);
    EXPECT_EQ(owner_.asked[1].why, owner_.asked[0].why);
    EXPECT_EQ(owner_.asked[1].title, "Approve a payment of $71.20?");
}

TEST_F(PaymentGateTest, AChangeTooNearTheDeadlineIsRefused) {
    const auto answeredAfter = [&](int milliseconds) {
        screens_ = {transfer(), transfer("€2,500.00")};
        owner_.asked.clear();
        owner_.react = [&, milliseconds](const auto& request, auto) {
            if (request.summary != "€25.00 to Ilse Varga") return kDeny;
            clock_.advance(std::chrono::milliseconds(milliseconds));
            return kApprove;
        };
        return run(tapOnRow(4));
    };
    EXPECT_EQ(answeredAfter(48'000).status, 403);
    EXPECT_EQ(owner_.asked.size(), 2u);
    EXPECT_EQ(answeredAfter(48'001).error,
              "Not done: the payment on screen changed after the owner approved it (now €2,500.00 "
              "to Ilse Varga), so that approval doesn't count. Repeat the action to ask again.");
    EXPECT_EQ(owner_.asked.size(), 1u);
    EXPECT_EQ(performed_, 0);
}

TEST_F(PaymentGateTest, AnApprovalIsVoidWhenTheScreenCannotBeReadAgain) {
    GateFrame covered = transfer();
    covered.unread = {{250, 440, 100, 60}};
    for (const ScreenReading& second :
         {ScreenReading(NoFrame{}), ScreenReading(Unreadable{}), ScreenReading(covered)}) {
        screens_ = {transfer(), second};
        owner_.answer({kApprove});
        EXPECT_EQ(
            run(tapOnRow(4)),
            (Reply{409,
                   "Not done: the owner approved, but Tandrel couldn't see the iPhone's screen to "
                   "check it still shows the same payment. Read the screen and repeat to ask "
                   "again."}));
        EXPECT_EQ(events().back(),
                  "voided: tap “Confirm”: €25.00 to Ilse Varga: screen not readable after the "
                  "approval");
    }
    EXPECT_EQ(performed_, 0);
}

TEST_F(PaymentGateTest, AnotherTargetIsNeitherJudgedNorActedOn) {
    const Error changed{"Not done: the phone changed.", 409};
    screens_ = {changed};
    EXPECT_EQ(run(tapOnRow(4)).error, changed.message);
    EXPECT_THAT(owner_.asked, testing::IsEmpty());

    screens_ = {transfer(), changed};
    owner_.answer({kApprove});
    EXPECT_EQ(run(tapOnRow(4)), (Reply{409, changed.message}));
    EXPECT_EQ(events().back(),
              "voided: tap “Confirm”: €25.00 to Ilse Varga: Not done: the phone changed.");
    EXPECT_EQ(performed_, 0);
}

TEST_F(PaymentGateTest, AnApprovalIsForThePlaceThatWasShown) {
    screens_ = {transfer()};
    pointer_ = PlaceOnScreen{0.5, 470.0 / 1300};
    onRead_ = [this] {
        if (reads_ == 2) pointer_->y = 0.9;  // somebody else moved it while the owner looked
    };
    owner_.answer({kApprove, kDeny});
    EXPECT_EQ(run(post("/nudge", {{"click", true}})).status, 403);
    ASSERT_EQ(owner_.asked.size(), 2u);
    EXPECT_EQ(owner_.asked[1].why, "an unlabelled spot on a payment screen showing €25.00");
    EXPECT_EQ(owner_.asked[1].place, (PlaceOnScreen{0.5, 0.9}));
    EXPECT_EQ(owner_.asked[1].what, "tap the screen");
}

// --- what goes ahead without a look, and what does not

TEST_F(PaymentGateTest, QuietActionsAreCheckedOnlyAfterAPayment) {
    screens_ = {frameOf({"Enter passcode to confirm payment"})};
    run(type("4821"));
    EXPECT_EQ(reads_, 0);
    EXPECT_EQ(performed_, 1);

    gate_.saw({"Total €5", "Confirm"});
    clock_.advance(std::chrono::milliseconds(119'999));
    EXPECT_EQ(run(type("4821")).status, 403);
    EXPECT_EQ(owner_.asked.back().what, "type on a passcode screen");
    // That look itself saw a payment.
    clock_.advance(std::chrono::seconds(119));
    EXPECT_EQ(run(key("space")).status, 403);
    screens_ = {article()};
    clock_.advance(std::chrono::seconds(120));
    const int before = reads_;
    run(type("4821"));
    EXPECT_EQ(reads_, before);
}

TEST_F(PaymentGateTest, AScreenReadForTheAssistantCountsOnlyWhenItPays) {
    screens_ = {article()};
    gate_.saw({"Total €5", "Oat milk"});
    run(type("4821"));
    EXPECT_EQ(reads_, 0);
}

TEST_F(PaymentGateTest, RoutesThatCannotPayAreNotRead) {
    screens_ = {transfer()};
    run(post("/move", {{"x", 0.5}, {"y", 0.5}, {"fraction", true}}));
    run(post("/home", Json::object()));
    run(key("tab"));
    run(post("/nudge", {{"dx", 5}, {"dy", 5}}));
    EXPECT_EQ(reads_, 0);
    EXPECT_EQ(performed_, 4);
}

TEST_F(PaymentGateTest, WithoutAFrameItDependsOnWhatWasThereBefore) {
    screens_ = {NoFrame{}};
    EXPECT_EQ(run(tapOnRow(4)).status, 200);
    gate_.saw({"Total €5", "Confirm"});
    for (const auto& request : {tapOnRow(4), type("hello"), key("return")}) {
        EXPECT_EQ(run(request), (Reply{409, kNoScreenAfterPayment}));
        EXPECT_EQ(events().back(),
                  "refused: " + request.path +
                      ": couldn't see the screen right after a payment was showing");
    }
    EXPECT_EQ(performed_, 1);
}

TEST_F(PaymentGateTest, UnreadableIsNotEmpty) {
    screens_ = {Unreadable{}};
    for (const auto& request : {tapOnRow(4), key("return"), type("a\n"),
                                post("/swipe", {{"x1", 1}, {"y1", 1}, {"x2", 2}, {"y2", 2}})}) {
        EXPECT_EQ(run(request), (Reply{409, kUnreadable}));
    }
    EXPECT_EQ(performed_, 0);
    EXPECT_EQ(run(type("quiet")).status, 200);
    gate_.saw({"Total €5", "Confirm"});
    EXPECT_EQ(run(type("quiet")).error, kUnreadable);
    EXPECT_EQ(events().back(), "refused: /type: couldn't read the screen");
}

TEST_F(PaymentGateTest, WhatSurroundsTheActionMustHaveBeenRead) {
    GateFrame frame = article();
    frame.unread = {{200, 700, 100, 40}};
    screens_ = {frame};
    EXPECT_EQ(run(tap(0.4, 0.55)).error, kUnreadable);
    EXPECT_EQ(run(tap(0.4, 0.9)).status, 200);
    EXPECT_EQ(run(key("return")).error, kUnreadable) << "the screen shows an amount";
    frame = frameOf({"Notes", "Groceries"});
    frame.unread = {{200, 700, 100, 40}};
    screens_ = {frame};
    EXPECT_EQ(run(key("return")).status, 200);
}

TEST_F(PaymentGateTest, TheSwitchIsReadAtEveryAction) {
    screens_ = {transfer()};
    testing::internal::CaptureStderr();
    defaults_.ask = false;
    EXPECT_EQ(run(tapOnRow(4)).status, 200);
    EXPECT_EQ(run(tapOnRow(4)).status, 200);
    EXPECT_EQ(reads_, 0);
    EXPECT_THAT(events(), testing::IsEmpty());
    EXPECT_FALSE(gate_.enabled());
    defaults_.ask = true;
    EXPECT_EQ(run(tapOnRow(4)).status, 403);
    const std::string lines = testing::internal::GetCapturedStderr();
    const auto off = lines.find("] Ask me before payments turned off\n");
    const auto on = lines.find("] Ask me before payments turned on\n");
    EXPECT_LT(off, on);
    EXPECT_NE(on, lines.npos);
    EXPECT_EQ(lines.find("turned off", off + 40), lines.npos);
}

// --- where a click lands

TEST_F(PaymentGateTest, AClickIsJudgedWhereThePointerIs) {
    screens_ = {transfer()};
    owner_.react = [](const auto&, auto) { return kTimeout; };  // a denied one is not asked again
    const auto click = [](int dx) { return post("/nudge", {{"click", true}, {"dx", dx}}); };
    const std::string onConfirm = "\"Confirm\" on a payment screen showing €25.00";
    const std::string nowhere = "an unlabelled spot on a payment screen showing €25.00";
    const PlaceOnScreen button{0.5, 470.0 / 1300};
    const PlaceOnScreen harmless{0.5, 170.0 / 1300};  // a line that the pointer hides
    const std::tuple<std::optional<PlaceOnScreen>, int, std::string> cases[] = {
        {button, 0, onConfirm},
        {button, 1, onConfirm},
        {harmless, 0, nowhere},
        {harmless, 40, nowhere},
        {std::nullopt, 0, nowhere}};
    for (const auto& [pointer, dx, why] : cases) {
        owner_.asked.clear();
        pointer_ = pointer;
        run(click(dx));
        EXPECT_EQ(owner_.asked.at(0).why, why);
    }
    // A click that strays from a harmless line is not shown as one on that line.
    pointer_ = harmless;
    run(click(40));
    EXPECT_EQ(owner_.asked.back().what, "tap the screen");
    EXPECT_EQ(owner_.asked.back().place, std::nullopt);
}

TEST_F(PaymentGateTest, ALongLabelIsCutForTheOwner) {
    screens_ = {frameOf({"Total €5", "Confirm", std::string(59, 'x') + "🇩🇪yz"})};
    run(tap(0.9999, 0.9999));
    EXPECT_EQ(owner_.asked[0].what, "tap the screen");
    GateFrame frame = frameOf({std::string(59, 'x') + "🇩🇪yz"});
    EXPECT_EQ(wording({.kind = PaymentGuard::Kind::tap, .x = 0.5, .y = 70.0 / 1300}, frame),
              "tap “" + std::string(59, 'x') + "🇩🇪”");
}

TEST(PaymentGateTimeout, IsReadAndClamped) {
    const std::pair<std::optional<std::string>, double> cases[] = {
        {std::nullopt, 50}, {"abc", 50},  {"", 50},     {"12abc", 50}, {" 20", 50},
        {"nan", 50},        {"1", 3},     {"-5", 3},    {"2.999", 3},  {"3", 3},
        {"20.5", 20.5},     {"120", 120}, {"500", 120}, {"1e9", 120},
    };
    for (const auto& [text, seconds] : cases) {
        EXPECT_EQ(PaymentGate::timeoutSeconds(text), seconds) << text.value_or("absent");
    }
}

}  // namespace
}  // namespace tandrel
