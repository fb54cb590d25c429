#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tandrel {

// What a receiver program says on its standard output, line by line.
class ReceiverWords {
 public:
    static constexpr std::size_t kLongestLine = 500;

    void add(std::string_view text);
    // Whether it said anything yet.
    bool hasSpoken() const { return hasSpoken_; }
    // The last line that tells of a failure, else the last line.
    std::string lastError() const { return error_.empty() ? last_ : error_; }
    // One sentence with the command that helps, when something that the program needs is not
    // installed.
    std::optional<std::string> missingPart() const;

 private:
    void takeLine();

    std::string line_;
    std::string last_;
    std::string error_;
    std::string lack_;  // the sentence for the first line that tells of one
    bool hasSpoken_ = false;
};

// The same for a program that is not there at all.
std::string missingReceiver(std::string_view program);

}  // namespace tandrel
