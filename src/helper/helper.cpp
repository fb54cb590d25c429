#include "helper/helper.h"

#include <cstdio>

#include "base/app_info.h"

namespace tandrel {

int runHelper(const std::vector<std::string>& arguments) {
    if (arguments.size() == 1 && arguments.front() == "--version") {
        const AppInfo info = AppInfo::load(AppInfo::bundleOfThisProgram());
        std::printf("tandrel %s\n", info.version.c_str());
        return 0;
    }
    std::fputs("usage: tandrel --version\n", stderr);
    return 2;
}

}  // namespace tandrel
