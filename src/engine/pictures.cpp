#include "engine/pictures.h"

#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "base/base64.h"
#include "screen/recognize.h"

namespace tandrel {
namespace {

// One frame on its way out: what is sent, and what it was made from.
struct Picture {
    Screen::Latest latest;
    Size imageSize;
    std::string contentType;
    Bytes bytes;
};

Result<std::optional<int>> wholeNumber(const HTTPRequest& request, const char* key) {
    const auto item = request.query.find(key);
    if (item == request.query.end() || item->second.empty()) return std::nullopt;
    const std::string& text = item->second;
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value < 1) {
        return fail(fmt::format("{} must be a whole number from 1", key));
    }
    return value;
}

Result<Picture> take(const Device& device, const SnapshotOptions& options) {
    auto latest = device.screen->latest();
    if (!latest) return fail("no frame yet from " + device.name() + ": unlock it", 503);
    auto bytes = encodeSnapshot(latest->frame, options);
    if (!bytes) return fail("couldn't read the frame", 500);
    const Size size{latest->frame.width(), latest->frame.height()};
    return Picture{std::move(*latest), imageSize(size, options.maxWidth, options.maxEdge),
                   options.format == ImageFormat::png ? "image/png" : "image/jpeg",
                   std::move(*bytes)};
}

std::map<std::string, std::string> headersOf(const Device& device, const Picture& picture) {
    return {{"X-Device", device.id()},
            {"X-Screen-Width", std::to_string(picture.latest.frame.width())},
            {"X-Screen-Height", std::to_string(picture.latest.frame.height())},
            {"X-Image-Width", std::to_string(picture.imageSize.width)},
            {"X-Image-Height", std::to_string(picture.imageSize.height)}};
}

// A header's value inside a JSON reply: a number where it reads as a whole number.
Json headerJson(const std::string& text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc{} && end == text.data() + text.size()) return number;
    return text;
}

// From the pixels of the frame to the pixels of the delivered image.
struct ImageScale {
    double x;
    double y;
    explicit ImageScale(const Picture& picture)
        : x(static_cast<double>(picture.imageSize.width) / picture.latest.frame.width()),
          y(static_cast<double>(picture.imageSize.height) / picture.latest.frame.height()) {}

    template <typename Box>
    Box operator()(Box box) const {
        box.x = std::round(box.x * x);
        box.y = std::round(box.y * y);
        box.width = std::round(box.width * x);
        box.height = std::round(box.height * y);
        return box;
    }
};

Json areaJson(const UnreadArea& area) {
    return {{"x", area.x}, {"y", area.y}, {"w", area.width}, {"h", area.height}};
}

// Adds what was read on the frame, in the pixels of the delivered image.
void addText(Json& reply, const ReadText& text, const ImageScale& scale) {
    reply["ocr"] = texts(text.records);
    for (const TextRecord& record : text.records) reply["lines"].push_back(toJson(scale(record)));
    for (const UnreadArea& area : text.unread) reply["unread"].push_back(areaJson(scale(area)));
}

}  // namespace

Result<SnapshotOptions> parseSnapshotOptions(const HTTPRequest& request) {
    SnapshotOptions options;
    const auto format = request.query.find("format");
    if (format != request.query.end() && format->second != "png")
        options.format = ImageFormat::jpeg;
    options.maxWidth = TRY(wholeNumber(request, "maxWidth"));
    options.maxEdge = TRY(wholeNumber(request, "maxEdge"));
    return options;
}

HTTPResponse screenshot(const Device& device, const SnapshotOptions& options) {
    auto picture = take(device, options);
    if (!picture) return HTTPResponse::error(picture.error());
    HTTPResponse response;
    response.contentType = picture->contentType;
    response.headers = headersOf(device, *picture);
    response.body = std::move(picture->bytes);
    return response;
}

HTTPResponse look(const Device& device, const SnapshotOptions& options, ScreenReader& reader,
                  const std::function<void(const std::vector<std::string>&)>& saw) {
    const auto picture = take(device, options);
    if (!picture) return HTTPResponse::error(picture.error());
    Json reply = {{"image", base64(picture->bytes)},
                  {"mimeType", picture->contentType},
                  {"ocr", Json::array()},
                  {"lines", Json::array()},
                  {"unread", Json::array()},
                  {"frameAge", std::round(picture->latest.ageSeconds * 1000) / 1000}};
    for (const auto& [name, value] : headersOf(device, *picture)) reply[name] = headerJson(value);
    // The frame itself is read, not the image made from it: a scaled-down picture loses small
    // print.
    const PixelBuffer& frame = picture->latest.frame;
    const auto text = reader.read(device.id(), frame);
    if (text) {
        saw(texts(text->records));
        addText(reply, *text, ImageScale(*picture));
    } else {
        const UnreadArea everything{0, 0, static_cast<double>(picture->imageSize.width),
                                    static_cast<double>(picture->imageSize.height)};
        reply["unread"].push_back(areaJson(everything));
        reply["readError"] = text.error().message;
    }
    return HTTPResponse::json(reply);
}

}  // namespace tandrel
