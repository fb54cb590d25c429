#include "payments/approvals.h"

#include <cerrno>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/file.h"
#include "base/json.h"
#include "payments/printable.h"

namespace tandrel {
namespace {

constexpr std::size_t kLongestLine = 64u << 10;  // bytes; a record of the gate has a few hundred

// The file's lines one by one; one beyond the limit comes cut off, which makes it no record.
class LineReader {
 public:
    explicit LineReader(std::FILE* file) : file_(file) {}

    std::optional<std::string> next() {
        std::string line;
        bool any = false;
        for (int c = std::getc(file_); c != EOF; c = std::getc(file_)) {
            any = true;
            if (c == '\n') return line;
            if (line.size() < kLongestLine) line.push_back(static_cast<char>(c));
        }
        if (!any) return std::nullopt;
        return line;
    }

 private:
    std::FILE* const file_;
};

std::optional<Approval> parse(const std::string& line) {
    const auto json = parseJson(line);
    if (!json) return std::nullopt;
    auto at = textMember(*json, "at");
    auto event = textMember(*json, "event");
    auto detail = textMember(*json, "detail");
    if (!at || !event || !detail) return std::nullopt;
    return Approval{std::move(*at), std::move(*event), std::move(*detail), textMember(*json, "why"),
                    textMember(*json, "rule")};
}

void printRow(const Approval& approval, std::FILE* out) {
    std::string why = approval.why ? " (" + *approval.why + ")" : "";
    if (approval.rule) why += " [" + *approval.rule + "]";
    fmt::print(out, "{:<20}  {:<9}  {}\n", printable(approval.at), printable(approval.event),
               printable(approval.detail + why));
}

void printJson(const Approval& approval, std::size_t index, std::FILE* out) {
    Json json = {{"at", approval.at}, {"detail", approval.detail}, {"event", approval.event}};
    if (approval.why) json["why"] = *approval.why;
    if (approval.rule) json["rule"] = *approval.rule;
    fmt::print(out, "{}{}", index == 0 ? "\n" : ",\n", dumpJson(json));
}

struct Counts {
    std::size_t read = 0;
    std::size_t unreadable = 0;
};

// Calls `take` with each record and its index.
Counts forEachRecord(std::FILE* file, const std::function<void(Approval, std::size_t)>& take) {
    Counts counts;
    LineReader lines(file);
    while (const auto line = lines.next()) {
        if (line->empty()) continue;
        if (auto approval = parse(*line)) {
            take(std::move(*approval), counts.read++);
        } else {
            ++counts.unreadable;
        }
    }
    return counts;
}

Counts printRecords(std::FILE* file, ApprovalsFormat format, std::FILE* out) {
    return forEachRecord(file, [=](const Approval& approval, std::size_t index) {
        if (format == ApprovalsFormat::json) return printJson(approval, index, out);
        if (index == 0) fmt::print(out, "{:<20}  {:<9}  {}\n", "TIME (UTC)", "EVENT", "WHAT");
        printRow(approval, out);
    });
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

// None when there is no such file yet.
Result<OpenFile> openLog(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0 && errno == ENOENT) return OpenFile();
    if (descriptor < 0) return fail(systemError(errno));
    OpenFile file(::fdopen(descriptor, "r"));
    struct stat status{};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return fail("it is not a file");
    }
    return file;
}

}  // namespace

Result<Approvals> readApprovals(const std::filesystem::path& path, std::size_t most) {
    const OpenFile file = TRY(openLog(path));
    Approvals approvals;
    if (!file) return approvals;
    const Counts counts = forEachRecord(file.get(), [&](Approval approval, std::size_t) {
        approvals.newest.push_back(std::move(approval));
        if (approvals.newest.size() > most) approvals.newest.pop_front();
    });
    approvals.older = counts.read - approvals.newest.size();
    approvals.unreadable = counts.unreadable;
    return approvals;
}

int printApprovals(const std::filesystem::path& path, ApprovalsFormat format, std::FILE* out) {
    const auto file = openLog(path);
    if (!file) {
        fmt::print(stderr, "can't read {}: {}\n", printable(path.string()), file.error().message);
        return 1;
    }
    const bool json = format == ApprovalsFormat::json;
    if (json) fmt::print(out, "{{\"approvals\":[");
    const Counts counts = *file ? printRecords(file->get(), format, out) : Counts{};
    if (json) {
        fmt::print(out, "],\"unreadable\":{}}}\n", counts.unreadable);
        return 0;
    }
    if (counts.read == 0) fmt::print(out, "No payment has been asked about yet.\n");
    if (counts.unreadable > 0) {
        fmt::print(out, "{} lines of {} could not be read.\n", counts.unreadable,
                   printable(path.string()));
    }
    return 0;
}

}  // namespace tandrel
