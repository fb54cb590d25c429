#include "app/qt_main_loop.h"

#include <QApplication>
#include <QTimer>
#include <deque>

#include "base/mutex.h"

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

// The posted tasks; Qt is handed no more than a bell for each, so that what a task carries goes
// from thread to thread under a lock that the thread sanitizer sees.
class QtMainLoop::Inbox final : public QObject {
 public:
    void put(Task task) {
        MutexLock lock(mutex_);
        tasks_.push_back(std::move(task));
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

 protected:
    void customEvent(QEvent*) override { take()(); }

 private:
    Task take() {
        MutexLock lock(mutex_);
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        return task;
    }

    Mutex mutex_;
    std::deque<Task> tasks_ OWNED_BY(mutex_);
};

QtMainLoop::QtMainLoop()
    : application_(std::make_unique<QApplication>(argumentCount, arguments)),
      inbox_(std::make_unique<Inbox>()) {
    QApplication::setApplicationName("Tandrel");
    QApplication::setDesktopFileName("tandrel");
}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task) { inbox_->put(std::move(task)); }

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
