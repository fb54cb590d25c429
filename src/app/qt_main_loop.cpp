#include "app/qt_main_loop.h"

#include <QApplication>
#include <QTimer>

namespace tandrel {
namespace {

class QtTimer final : public Timer {
 public:
    QtTimer(Duration interval, bool once, MainLoop::Task task) {
        timer_.setSingleShot(once);
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, std::move(task));
        timer_.start(std::chrono::duration_cast<std::chrono::milliseconds>(interval));
    }

 private:
    QTimer timer_;
};

// Qt keeps references to these for as long as the application lives.
int argumentCount = 1;
char programName[] = "tandrel-app";
char* arguments[] = {programName, nullptr};

}  // namespace

QtMainLoop::QtMainLoop() : application_(std::make_unique<QApplication>(argumentCount, arguments)) {
    QApplication::setApplicationName("Tandrel");
    QApplication::setDesktopFileName("tandrel");
}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task) {
    QMetaObject::invokeMethod(application_.get(), std::move(task), Qt::QueuedConnection);
}

std::unique_ptr<Timer> QtMainLoop::after(Duration delay, Task task) {
    return std::make_unique<QtTimer>(delay, true, std::move(task));
}

std::unique_ptr<Timer> QtMainLoop::every(Duration interval, Task task) {
    return std::make_unique<QtTimer>(interval, false, std::move(task));
}

int QtMainLoop::run() { return QApplication::exec(); }

void QtMainLoop::quit(int status) {
    post([status] { QApplication::exit(status); });
}

}  // namespace tandrel
