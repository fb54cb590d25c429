#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/brand.h"
#include "base/app_info.h"
#include "base/result.h"

namespace tandrel {

// Pictures of every window in its states, drawn without a display and looked over for texts that do
// not fit or do not stand out.
struct Screenshots {
    struct Options {
        std::filesystem::path folder;
        ColorScheme appearance = ColorScheme::light;
        double textScale = 1;
    };
    // "DIR [--dark] [--scale N]"
    static Result<Options> parse(const std::vector<std::string>& arguments);

    // The command-line mode: makes the application object itself. 0 when all were drawn and nothing
    // was found, 1 otherwise, 2 for arguments that make no sense.
    static int render(const std::vector<std::string>& arguments, const AppInfo& info);

    // Draws them in an application that runs, and prints a line for each. How many faults there
    // were; the error says why there are no pictures.
    static Result<int> draw(const Options& options, const AppInfo& info);
};

}  // namespace tandrel
