#pragma once

#include <QImage>
#include <QString>
#include <vector>

#include "app/app_snapshot.h"
#include "app/icons.h"

namespace tandrel {

// The phone test as the owner sees it.
struct TestView {
    struct Line {
        QString title = {};
        Mark mark = Mark::running;
        QString detail = {};
    };
    std::vector<Line> lines = {};
    bool running = false;
    QString message = {};  // none before the end
};

// Tandrel moving the pointer to see whether it shows.
struct PointerView {
    bool looking = false;
    QString problem = {};  // of the last look; none when the pointer was seen
};

// What the setup window shows.
struct SetupView {
    AppSnapshot app;
    TestView test;
    PointerView pointer;
    QImage picture;  // what the phone shows; null when there is none
};

// The steps in their order.
enum class SetupStep { bluetooth, screen, pairing, pointer, apps, test };
inline constexpr int kSetupSteps = 6;

// What is in the way of one step, everything else taken to be in order; none when nothing is.
std::optional<Notice> noticeOf(SetupStep step, AppModelInputs inputs);

// Whether a step needs nothing more from the owner.
bool isDone(SetupStep step, const SetupView& view);
// The first step that does, the last one when none does.
SetupStep firstOpenStep(const SetupView& view);

}  // namespace tandrel
