#include "payments/payment_log.h"

#include <ctime>

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/json.h"
#include "base/log.h"
#include "base/paths.h"

namespace tandrel {
namespace {

class Descriptor {
 public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }

 private:
    const int number_;
};

// Whether the file's last line was left without its end. A line that another copy of the program is
// just writing looks the same, which costs an empty line.
bool endsMidLine(int file, off_t size) {
    char last = '\n';
    return size > 0 && ::pread(file, &last, 1, size - 1) == 1 && last != '\n';
}

}  // namespace

PaymentLog::PaymentLog(std::filesystem::path file, Clock& clock)
    : file_(std::move(file)), clock_(clock), queue_("tandrel.approvals") {}

std::filesystem::path PaymentLog::location(std::string_view supportFolder) {
    const auto given = environment("TANDREL_APPROVALS_LOG");
    if (given && !given->empty()) return *given;
    return dataHome() / supportFolder / "approvals.jsonl";
}

void PaymentLog::record(std::string_view event, std::string_view detail,
                        const std::optional<std::string>& why, std::string_view rule) {
    log(fmt::format("payment {}: {}{}{}", event, detail, why ? " (" + *why + ")" : "",
                    rule.empty() ? "" : fmt::format(" [{}]", rule)));
    Json entry = {{"at", isoTimestamp(clock_.wallNow())}, {"detail", detail}, {"event", event}};
    if (why) entry["why"] = *why;
    if (!rule.empty()) entry["rule"] = rule;
    queue_.post([this, line = dumpJson(entry) + "\n"]() mutable {
        queue_.assertCurrent();
        append(std::move(line));
    });
}

void PaymentLog::flush() {
    queue_.sync([] {});
}

void PaymentLog::append(std::string line) {
    std::error_code ignored;
    if (file_.has_parent_path()) std::filesystem::create_directories(file_.parent_path(), ignored);
    // Without O_NONBLOCK a pipe in the file's place would hold the queue up.
    const Descriptor file(::open(file_.c_str(),
                                 O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY,
                                 S_IRUSR | S_IWUSR));
    struct stat status{};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
    if (mayBeTorn_ && endsMidLine(file.get(), status.st_size)) line.insert(line.begin(), '\n');
    const auto written = ::write(file.get(), line.data(), line.size());
    mayBeTorn_ = written != static_cast<ssize_t>(line.size());
}

std::string isoTimestamp(WallTime time) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(whole)));
}

}  // namespace tandrel
