#pragma once

#include <QApplication>

#include <gtest/gtest.h>

namespace tandrel {

// Windows without a display. There is one application object, which all such tests share.
class Offscreen : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        if (qApp != nullptr) return;
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "test";
        static char* arguments[] = {name, nullptr};
        static QApplication application(count, arguments);
    }
};

}  // namespace tandrel
