#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tandrel {

// Cuts a stream of bytes into lines, wherever the stream's own pieces begin and end.
class LineReader {
 public:
    // Much longer than any request of ours; what is longer is dropped and never held.
    static constexpr std::size_t kLongestLine = 4 << 20;

    enum class Kind { whole, tooLong };
    // `line` comes without its end ("\n" or "\r\n") and is valid during the call; for a line that
    // is too long it is empty.
    using Receiver = std::function<void(Kind kind, std::string_view line)>;

    explicit LineReader(Receiver receiver, std::size_t longest = kLongestLine)
        : receiver_(std::move(receiver)), longest_(longest) {}

    // Takes the stream's next bytes. Blank lines are passed over. A line that grows too long is
    // told of at once and the rest of it is skipped.
    void append(std::string_view bytes);
    // The stream has ended: what came after the last line end is a line too.
    void finish();

 private:
    void take(std::string_view part);
    void endLine();

    const Receiver receiver_;
    const std::size_t longest_;
    std::string line_;
    bool skipping_ = false;
};

}  // namespace tandrel
