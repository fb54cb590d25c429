#include "base/log.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "base/mutex.h"

namespace tandrel {
namespace {

Mutex sharedMutex;
std::shared_ptr<AppLog> sharedLog OWNED_BY(sharedMutex);

std::shared_ptr<AppLog> shared() {
    MutexLock lock(sharedMutex);
    return sharedLog;
}

// One write for the whole line; what a full disk or a closed pipe does not take is lost.
void writeOnce(int file, std::string_view line) {
    [[maybe_unused]] const auto count = ::write(file, line.data(), line.size());
}

}  // namespace

std::string localTimestamp(WallTime time) {
    const std::time_t moment = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    localtime_r(&moment, &local);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return {text, length};
}

void log(std::string_view message) {
    std::string line = "[" + localTimestamp(systemClock().wallNow()) + "] ";
    line += message;
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::replace(line.begin(), line.end(), '\r', ' ');
    line += '\n';
    writeOnce(STDERR_FILENO, line);
    if (const auto file = shared()) file->write(std::move(line));
}

AppLog::AppLog(std::filesystem::path file) : path_(std::move(file)), queue_("tandrel.log") {}

AppLog::~AppLog() {
    queue_.stop();
    queue_.sync([this] {
        queue_.assertCurrent();
        if (file_ >= 0) ::close(file_);
    });
}

void AppLog::setShared(std::shared_ptr<AppLog> shared) {
    {
        MutexLock lock(sharedMutex);
        sharedLog.swap(shared);
    }
    // The previous log, if any, ends here, outside the lock: ending joins its queue.
}

void AppLog::write(std::string line) {
    queue_.post([this, line = std::move(line)] {
        queue_.assertCurrent();
        open();
        if (file_ >= 0) writeOnce(file_, line);
    });
}

void AppLog::flush() {
    queue_.sync([] {});
}

void AppLog::open() {
    if (std::exchange(opened_, true)) return;
    std::error_code error;
    std::filesystem::create_directories(path_.parent_path(), error);
    const auto size = std::filesystem::file_size(path_, error);
    if (!error && size > kLargestAtStart) std::filesystem::remove(path_, error);
    file_ = ::open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
}

}  // namespace tandrel
