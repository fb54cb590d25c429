#include "app/terminal_asker.h"

#include <cmath>

#include <fmt/format.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "payments/printable.h"

namespace tandrel {
namespace {

constexpr int kLookAroundMilliseconds = 200;
constexpr std::size_t kLongestAnswer = 256;

void say(const std::string& text) {
    fmt::print("{}", text);
    std::fflush(stdout);
}

// One line from the terminal; nothing until a whole one has come.
class LineReader {
 public:
    enum class State { waiting, complete, closed };

    State poll() {
        pollfd waiting{STDIN_FILENO, POLLIN, 0};
        if (::poll(&waiting, 1, kLookAroundMilliseconds) <= 0) return State::waiting;
        char chunk[64];
        const ssize_t count = ::read(STDIN_FILENO, chunk, sizeof chunk);
        if (count <= 0) return State::closed;
        line_.append(chunk, static_cast<std::size_t>(count));
        if (line_.find('\n') != std::string::npos || line_.size() > kLongestAnswer)
            return State::complete;
        return State::waiting;
    }
    std::string line() const { return line_.substr(0, line_.find('\n')); }

 private:
    std::string line_;
};

}  // namespace

ApprovalAnswer TerminalAsker::ask(const ApprovalRequest& request, TimePoint deadline,
                                  std::stop_token withdrawn) {
    ::tcflush(STDIN_FILENO, TCIFLUSH);  // what was typed before the question answers nothing
    say(
        fmt::format("\n{}\nYour AI wants to {} on your iPhone. The screen shows {}.\n"
                    "No answer in {} s means no. Type approve and Return to let this one action "
                    "through, anything else to deny: ",
                    printable(request.title), printable(request.what), printable(request.summary),
                    std::lround(toSeconds(deadline - clock_.now()))));
    LineReader reader;
    while (clock_.now() < deadline) {
        if (withdrawn.stop_requested()) {
            say("\nThe AI took its request back.\n");
            return ApprovalAnswer::timeout;
        }
        const auto state = reader.poll();
        if (state == LineReader::State::closed) return ApprovalAnswer::deny;
        if (state == LineReader::State::waiting) continue;
        const bool approved = reader.line() == "approve";
        say(approved ? "Approved.\n" : "Denied.\n");
        return approved ? ApprovalAnswer::approve : ApprovalAnswer::deny;
    }
    say("\nNo answer: that counts as a no.\n");
    return ApprovalAnswer::timeout;
}

void TerminalAsker::tell(const std::string& text) { say(printable(text) + "\n"); }

}  // namespace tandrel
