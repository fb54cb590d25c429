#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "app/brand.h"
#include "base/app_info.h"
#include "base/result.h"

namespace tandrel {

struct SampleWindow {
    std::string name;  // for its file
    std::unique_ptr<QWidget> widget;
};

// Every window in each of its states, none of them connected to anything: the setup's steps, the
// menu, the notices, the panel, the approvals, the icons. The error says what is not installed.
Result<std::vector<SampleWindow>> makeSampleWindows(ColorScheme appearance, const AppInfo& info);

}  // namespace tandrel
