#pragma once

#include <string>
#include <vector>

#include "app/setup_view.h"
#include "payments/approvals.h"

// Made-up but truthful states of the application, for the pictures of its windows.
namespace tandrel::samples {

// Everything is in order, shown with this picture of a phone.
SetupView ready(const QImage& picture);
// The same with an AI app that has lost its entry.
SetupView appLost(const QImage& picture);
// Before the owner has done anything.
SetupView fresh();

struct Named {
    std::string name;
    AppModelInputs inputs;
};
// One for each notice there is.
std::vector<Named> notices();

Approvals approvals();

TestView passedTest();
TestView pointerTest();  // passed but for the pointer

}  // namespace tandrel::samples
