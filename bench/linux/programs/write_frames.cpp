#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

#include <unistd.h>

#include "image/gdp_writer.h"

// Writes frames into descriptor 3 as an AirPlay receiver does, at equal distances until the reader
// is gone:
//   write_frames WIDTH HEIGHT FRAMES_PER_SECOND
// The first 64 pixels of a frame are the bits of the time at which its writing began, in
// nanoseconds of the steady clock, the lowest first: white is one, black is zero.
namespace {

using tandrel::Bytes;

constexpr int kFrames = 3;

void stamp(Bytes& frame) {
    constexpr std::size_t kHead = 62;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto time = static_cast<std::uint64_t>(std::chrono::nanoseconds(now).count());
    for (std::size_t bit = 0; bit < 64; ++bit) frame[kHead + bit] = (time >> bit & 1) ? 235 : 16;
}

bool write(const Bytes& bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t count = ::write(kFrames, bytes.data() + at, bytes.size() - at);
        if (count <= 0) return false;
        at += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

int main(int count, char** words) {
    if (count != 4) return 2;
    const int width = std::max(std::atoi(words[1]), 64);
    const int height = std::atoi(words[2]);
    const std::chrono::nanoseconds interval(1'000'000'000 / std::max(std::atoi(words[3]), 1));
    Bytes frame = tandrel::gdp::frame(width, height);
    if (!write(tandrel::gdp::caps(width, height))) return 1;
    for (auto next = std::chrono::steady_clock::now();; next += interval) {
        std::this_thread::sleep_until(next);
        stamp(frame);
        if (!write(frame)) return 0;
    }
}
