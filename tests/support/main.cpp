#include <gtest/gtest.h>

// Fontconfig points to parts of its patterns by their distance, which the leak checker cannot
// follow.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

// Pango reads fonts on a thread of its own and hands them over with GLib's locks, which the race
// checker does not see, since the system's libraries are built without it.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    return "race:libfontconfig.so\nrace:libpangoft2-1.0.so\nrace:libglib-2.0.so\n";
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
