#include "reading/picture_hash.h"

#include <array>
#include <bit>
#include <cstring>
#include <random>

namespace tandrel {

namespace {

struct Secrets {
    std::array<std::uint64_t, 4> start;
    std::array<std::uint64_t, 2> factor;  // odd
};

const Secrets& secrets() {
    static const Secrets drawn = [] {
        std::random_device device;
        auto word = [&] { return (std::uint64_t{device()} << 32) | device(); };
        Secrets made{};
        for (auto& value : made.start) value = word();
        for (auto& value : made.factor) value = word() | 1;
        return made;
    }();
    return drawn;
}

std::uint64_t wordAt(const std::uint8_t* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Two lanes for each of the two sums keep the multipliers busy.
class Mixer {
 public:
    Mixer() : lanes_(secrets().start), factor_(secrets().factor) {}

    void add(const std::uint8_t* bytes, std::size_t count) {
        for (; count >= 16; bytes += 16, count -= 16) mix(wordAt(bytes), wordAt(bytes + 8));
        std::array<std::uint8_t, 16> rest{};
        std::memcpy(rest.data(), bytes, count);
        if (count) mix(wordAt(rest.data()), wordAt(rest.data() + 8));
    }

    std::uint64_t first() const { return finished(lanes_[0], lanes_[1]); }
    std::uint64_t second() const { return finished(lanes_[2], lanes_[3]); }

 private:
    void mix(std::uint64_t a, std::uint64_t b) {
        lanes_[0] = std::rotl((lanes_[0] ^ a) * factor_[0], 29);
        lanes_[1] = std::rotl((lanes_[1] ^ b) * factor_[0], 29);
        lanes_[2] = std::rotl((lanes_[2] + a) * factor_[1], 37);
        lanes_[3] = std::rotl((lanes_[3] + b) * factor_[1], 37);
    }
    static std::uint64_t finished(std::uint64_t a, std::uint64_t b) {
        std::uint64_t sum = (a ^ std::rotl(b, 32)) * 0xff51afd7ed558ccdULL;
        sum ^= sum >> 33;
        return sum * 0xc4ceb9fe1a85ec53ULL ^ b;
    }

    std::array<std::uint64_t, 4> lanes_;
    const std::array<std::uint64_t, 2> factor_;
};

}  // namespace

PictureHash hashOf(const PixelBuffer& image) {
    Mixer mixer;
    const auto rowSize = static_cast<std::size_t>(image.width()) * PixelBuffer::kBytesPerPixel;
    for (int y = 0; y < image.height(); ++y) mixer.add(image.row(y), rowSize);
    return {image.width(), image.height(), mixer.first(), mixer.second()};
}

PictureHash hashOf(const GrayFrame& frame, const Ink& ink) {
    Mixer mixer;
    const auto width = static_cast<std::size_t>(ink.box.width());
    for (int y = ink.box.top; y < ink.box.bottom; ++y) {
        mixer.add(frame.row(y) + ink.box.left, width);
    }
    const std::array levels = {static_cast<std::uint8_t>(ink.paper),
                               static_cast<std::uint8_t>(ink.level)};
    mixer.add(levels.data(), levels.size());
    return {ink.box.width(), ink.box.height(), mixer.first(), mixer.second()};
}

}  // namespace tandrel
