#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "base/serial_queue.h"

namespace tandrel {

// Writes "[" + local time as yyyy-MM-ddTHH:mm:ss + "] " + message to standard error at once and to
// the application's log file in order. A line break inside the message is written as a space, so
// that one call is one line. Any thread.
void log(std::string_view message);

// The application's log file. Appending never fails aloud: without the file, lines go to standard
// error only.
class AppLog {
 public:
    // Nothing is opened before the first line. The folder is made when missing; a file larger than
    // kLargestAtStart is started afresh.
    explicit AppLog(std::filesystem::path file);
    ~AppLog();
    AppLog(const AppLog&) = delete;
    AppLog& operator=(const AppLog&) = delete;

    static constexpr std::uintmax_t kLargestAtStart = 2'000'000;

    // Appends the line as it is, later, in call order.
    void write(std::string line);
    // Waits until every line handed over before is in the file.
    void flush();

    // The log that `log` writes to; none until the wiring names one.
    static void setShared(std::shared_ptr<AppLog> shared);

 private:
    void open() RUNS_ON(queue_);

    const std::filesystem::path path_;
    bool opened_ OWNED_BY(queue_) = false;
    int file_ OWNED_BY(queue_) = -1;
    SerialQueue queue_;
};

// The time of the system's zone as yyyy-MM-ddTHH:mm:ss.
std::string localTimestamp(WallTime time);

}  // namespace tandrel
