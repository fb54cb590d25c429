#include "app/setup_view.h"

#include <gtest/gtest.h>

#include "app/sample_views.h"

namespace tandrel {
namespace {

TEST(SetupView, OpensTheFirstStepThatNeedsTheOwner) {
    SetupView view = samples::ready({});
    EXPECT_EQ(firstOpenStep(view), SetupStep::test) << "nothing is open, so the last";
    // Each takes away one thing more, from the last step to the first.
    const std::pair<SetupStep, void (*)(AppSnapshot&)> rows[] = {
        {SetupStep::test, [](AppSnapshot& app) { app.testPassed = false; }},
        {SetupStep::apps, [](AppSnapshot& app) { app.aiApps[0].link = Link::addedElsewhere; }},
        {SetupStep::pointer, [](AppSnapshot& app) { app.assistiveTouchOn = false; }},
        {SetupStep::pairing, [](AppSnapshot& app) { app.inputs.phoneConnected = false; }},
        {SetupStep::screen, [](AppSnapshot& app) { app.inputs.screenReady = false; }},
        {SetupStep::bluetooth, [](AppSnapshot& app) { app.inputs.bluetoothReady = false; }},
    };
    for (const auto& [step, undo] : rows) {
        undo(view.app);
        EXPECT_EQ(firstOpenStep(view), step);
        EXPECT_FALSE(isDone(step, view));
    }
}

TEST(SetupView, EachStepShowsOnlyWhatIsInItsOwnWay) {
    AppModelInputs in = samples::fresh().app.inputs;  // nothing works yet
    in.engineUp = true;
    const auto title = [&](SetupStep step) {
        const auto shown = noticeOf(step, in);
        return shown ? shown->title : "";
    };
    EXPECT_EQ(title(SetupStep::bluetooth), "Bluetooth is off on this Mac");
    EXPECT_EQ(title(SetupStep::screen), "The iPhone's cable is unplugged");
    EXPECT_EQ(title(SetupStep::pairing), "The iPhone isn't connected over Bluetooth");
    in.linkChoice = LinkChoice::airplay;
    EXPECT_EQ(title(SetupStep::screen), "Screen Mirroring isn't on");
    in = samples::ready({}).app.inputs;
    for (const SetupStep step : {SetupStep::bluetooth, SetupStep::screen, SetupStep::pairing}) {
        EXPECT_EQ(title(step), "");
    }
}

}  // namespace
}  // namespace tandrel
