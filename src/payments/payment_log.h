#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/clock.h"
#include "base/serial_queue.h"

namespace tandrel {

// The owner's record of every payment that was asked about: one JSON object a line, appended and
// never rewritten. Any thread.
class PaymentLog {
 public:
    explicit PaymentLog(std::filesystem::path file, Clock& clock = systemClock());

    // TANDREL_APPROVALS_LOG when that is set, else "approvals.jsonl" in the program's folder below
    // the user's data folder.
    static std::filesystem::path location(std::string_view supportFolder);

    // Writes "payment " + event + ": " + detail, with " (" + why + ")" where there is one, to the
    // application's log, and {"at", "detail", "event", "why"} to the file: later, in call order, by
    // one write each, so that a crash leaves no torn line. A line that cannot be written is
    // dropped. Where a rule of the second layer saw the payment, its name follows in brackets and
    // as "rule".
    void record(std::string_view event, std::string_view detail,
                const std::optional<std::string>& why = std::nullopt, std::string_view rule = {});
    // Waits until everything recorded before is in the file.
    void flush();

 private:
    void append(std::string line) RUNS_ON(queue_);

    const std::filesystem::path file_;
    Clock& clock_;
    bool mayBeTorn_ OWNED_BY(queue_) = true;
    SerialQueue queue_;
};

// The time in UTC as yyyy-MM-ddTHH:mm:ssZ (ISO 8601).
std::string isoTimestamp(WallTime time);

}  // namespace tandrel
