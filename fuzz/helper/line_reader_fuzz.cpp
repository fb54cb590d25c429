#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "helper/line_reader.h"

namespace {

using tandrel::LineReader;
using Lines = std::vector<std::pair<LineReader::Kind, std::string>>;

constexpr std::size_t kLongest = 64;

// The lines of `bytes` taken in pieces of `size` bytes.
Lines linesOf(std::string_view bytes, std::size_t size) {
    Lines lines;
    LineReader reader(
        [&](LineReader::Kind kind, std::string_view line) { lines.emplace_back(kind, line); },
        kLongest);
    for (std::size_t at = 0; at < bytes.size(); at += size) reader.append(bytes.substr(at, size));
    reader.finish();
    return lines;
}

}  // namespace

// However the bytes are cut, the lines are the same, and none is longer than allowed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const Lines whole = linesOf(bytes, bytes.size() + 1);
    if (linesOf(bytes, data[0] % 80U + 1U) != whole) std::abort();
    for (const auto& [kind, line] : whole) {
        if (line.size() > kLongest || line.find('\n') != std::string::npos) std::abort();
    }
    return 0;
}
