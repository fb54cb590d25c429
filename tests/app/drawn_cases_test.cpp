#include "app/drawn_cases.h"

#include <gmock/gmock.h>

namespace tandrel {
namespace {

using PaymentGuard::JudgedScreen;
using PaymentGuard::parseWrittenAction;
using PaymentGuard::parseWrittenScreen;
using testing::HasSubstr;
using testing::IsSupersetOf;

class DrawnCasesTest : public testing::Test {
 protected:
    Result<JudgedScreen> draw(const std::vector<std::string>& rows, const std::string& action) {
        const auto screen = parseWrittenScreen(rows);
        return reader_->draw(screen, *parseWrittenAction(action, screen));
    }
    const std::unique_ptr<DrawnCases> reader_ = *DrawnCases::make();
};

TEST_F(DrawnCasesTest, WhatIsWrittenIsReadAndTapped) {
    const std::vector<std::string> rows = {"= Basket",    "Coffee and a bun", "Total | €5.20",
                                           ":In a hurry", "_Code_",           "[Pay now]",
                                           "(Cancel)",    "~Slide to pay~",   "{tick}"};
    const std::pair<std::string, std::optional<std::string>> taps[] = {
        {"= Basket", "Basket"},   {"Coffee and a bun", "Coffee and a bun"},
        {"Total", "Total"},       {"€5.20", "€5.20"},
        {"_Code_", "Code"},       {"In a hurry", "In a hurry"},
        {"[Pay now]", "Pay now"}, {"~Slide to pay~", "Slide to pay"},
        {"Cancel", "Cancel"},     {"{tick}", std::nullopt}};
    for (const auto& [target, words] : taps) {
        const auto drawn = draw(rows, "tap " + target);
        ASSERT_TRUE(drawn) << drawn.error().message;
        const auto& [frame, lines, action] = *drawn;
        EXPECT_THAT(PaymentGuard::texts(lines), IsSupersetOf({"Basket", "€5.20", "Pay now"}));
        const auto hit = PaymentGuard::label(action.x, action.y, lines, frame);
        EXPECT_EQ(hit.value_or("").size() > 2 ? hit : std::nullopt, words) << target;
    }
}

TEST_F(DrawnCasesTest, WhatCannotBeDrawnOrReadIsAnError) {
    const std::vector<std::string> high(40, "Item | €1.00");
    EXPECT_THAT(draw(high, "enter").error().message, HasSubstr("higher than the screen"));
    EXPECT_THAT(draw({"{unicorn}"}, "tap {unicorn}").error().message, HasSubstr("unicorn"));
    EXPECT_FALSE(reader_->read("/no/such.png", {}));
}

}  // namespace
}  // namespace tandrel
