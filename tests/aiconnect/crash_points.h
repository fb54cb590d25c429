#pragma once

#include <functional>

namespace tandrel {

// The moments before and after each call of this program that changes a file (the linker routes
// them here, see CMakeLists.txt). Calls on descriptors that are no files, such as standard output,
// do not count.
class CrashPoints {
 public:
    // Calls `act` once, at the moment of this number, counted from 1 from now on.
    static void at(int number, std::function<void()> act);
    // How many there were since.
    static int count();
};

}  // namespace tandrel
