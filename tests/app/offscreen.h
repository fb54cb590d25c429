#pragma once

#include <QApplication>
#include <memory>

#include <gtest/gtest.h>

namespace tandrel {

// Windows without a display.
class Offscreen : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "test";
        static char* arguments[] = {name, nullptr};
        application_ = std::make_unique<QApplication>(count, arguments);
    }
    // Not at the end of the process, when parts of Qt are gone already.
    static void TearDownTestSuite() { application_.reset(); }

 private:
    static inline std::unique_ptr<QApplication> application_;
};

}  // namespace tandrel
