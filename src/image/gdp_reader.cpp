#include "image/gdp_reader.h"

#include <charconv>
#include <utility>

#include <fmt/format.h>
#include <libyuv.h>

namespace tandrel {
namespace {

constexpr std::size_t kHeadBytes = 62;
constexpr std::size_t kMostOtherBytes = 64 * 1024;  // of caps and events
constexpr std::size_t kMostPadding = 64 * 1024;     // behind a frame's planes
constexpr int kFramePayload = 1;
constexpr int kCapsPayload = 2;
constexpr int kFirstEventPayload = 64;

// The value of "key=(type)value" among the caps' members, without its type and quotation marks.
std::string_view member(std::string_view caps, std::string_view key) {
    std::size_t at = 0;
    while ((at = caps.find(key, at)) != std::string_view::npos) {
        const bool isWhole = at > 0 && (caps[at - 1] == ' ' || caps[at - 1] == ',');
        at += key.size();
        if (!isWhole || at >= caps.size() || caps[at] != '=') continue;
        std::string_view value = caps.substr(at + 1);
        if (value.starts_with('('))
            value = value.substr(std::min(value.find(')') + 1, value.size()));
        if (value.starts_with('"')) value.remove_prefix(1);
        return value.substr(0, value.find_first_of(",;\" "));
    }
    return {};
}

std::optional<int> side(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || value < 1 || value > RawVideoForm::kLargestSide) {
        return std::nullopt;
    }
    return end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

}  // namespace

Result<RawVideoForm> RawVideoForm::parse(std::string_view caps) {
    if (!caps.starts_with("video/x-raw")) return fail("the receiver sends no raw video");
    if (const auto format = member(caps, "format"); format != "I420") {
        return fail(fmt::format("the receiver sends {} instead of I420 frames",
                                format.empty() ? "unknown" : format.substr(0, 16)));
    }
    const auto width = side(member(caps, "width"));
    const auto height = side(member(caps, "height"));
    if (!width || !height || *width * *height > RawVideoForm::kMostPixels) {
        return fail("the receiver sends frames of no usable size");
    }
    RawVideoForm form{*width, *height};
    if (member(caps, "colorimetry") == "bt709") form.colours = Colours::bt709;
    return form;
}

GdpReader::GdpReader() { expectHead(); }

void GdpReader::expectHead() {
    isHead_ = true;
    wanted_ = kHeadBytes;
    filled_ = 0;
    if (bytes_.size() < wanted_) bytes_.resize(wanted_);
}

std::span<std::uint8_t> GdpReader::space() { return {bytes_.data() + filled_, wanted_ - filled_}; }

Result<std::optional<GdpReader::Event>> GdpReader::take(std::size_t count) {
    filled_ += std::min(count, wanted_ - filled_);
    if (filled_ < wanted_) return std::nullopt;
    if (isHead_) {
        TRY_VOID(readHead());
        if (wanted_ > 0) return std::nullopt;
    }
    auto event = readPayload();
    expectHead();
    return event;
}

Result<void> GdpReader::readHead() {
    const auto at = [this](std::size_t i) { return static_cast<std::uint32_t>(bytes_[i]); };
    const auto type = static_cast<int>(at(4) << 8 | at(5));
    const std::size_t length = at(6) << 24 | at(7) << 16 | at(8) << 8 | at(9);
    std::size_t most = kMostOtherBytes;
    if (type == kFramePayload) {
        if (!form_) return fail("the receiver sent a frame before it told the frames' form");
        payload_ = Payload::frame;
        most = form_->frameBytes() + kMostPadding;
        if (length < form_->frameBytes()) {
            return fail(fmt::format("the receiver sent a frame of {} bytes, where {} x {} takes {}",
                                    length, form_->width, form_->height, form_->frameBytes()));
        }
    } else {
        payload_ = type == kCapsPayload ? Payload::caps : Payload::other;
    }
    const bool isKnown =
        type == kFramePayload || type == kCapsPayload || type == 0 || type >= kFirstEventPayload;
    if (at(0) != 1 || !isKnown) return fail("what the receiver sends is no stream of frames");
    if (length > most) {
        return fail(fmt::format("the receiver sent a message of {} bytes, which is none", length));
    }
    isHead_ = false;
    wanted_ = length;
    filled_ = 0;
    if (bytes_.size() < wanted_) bytes_.resize(wanted_);
    return {};
}

Result<std::optional<GdpReader::Event>> GdpReader::readPayload() {
    if (payload_ == Payload::other) return std::nullopt;
    if (payload_ == Payload::frame) return Event{picture(), *form_};
    std::string_view caps(reinterpret_cast<const char*>(bytes_.data()), wanted_);
    caps = caps.substr(0, caps.find('\0'));
    form_ = TRY(RawVideoForm::parse(caps));
    return Event{{}, *form_};
}

PixelBuffer GdpReader::picture() {
    const RawVideoForm& form = *form_;
    const std::uint8_t* y = bytes_.data();
    const std::uint8_t* u = y + form.lumaStride() * form.lumaRows();
    const std::uint8_t* v = u + form.chromaStride() * (form.lumaRows() / 2);
    const auto convert =
        form.colours == RawVideoForm::Colours::bt709 ? libyuv::H420ToARGB : libyuv::I420ToARGB;
    const int rowBytes = form.width * PixelBuffer::kBytesPerPixel;
    auto pixels =
        pool_.take(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(form.height));
    convert(y, static_cast<int>(form.lumaStride()), u, static_cast<int>(form.chromaStride()), v,
            static_cast<int>(form.chromaStride()), pixels.get(), rowBytes, form.width, form.height);
    const std::uint8_t* first = pixels.get();
    return PixelBuffer::adopt(form.width, form.height, rowBytes, first, std::move(pixels));
}

}  // namespace tandrel
