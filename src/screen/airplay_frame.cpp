#include "screen/airplay_frame.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "base/base64.h"
#include "screen/recognize.h"

namespace tandrel {
namespace {

// A capture that was made for this very request has no frame yet.
constexpr Duration kFirstFramePatience = std::chrono::seconds(2);

bool isOn(const HTTPRequest& request, const char* key, bool fallback) {
    constexpr std::array off{"0", "off", "no", "false"};
    const auto item = request.query.find(key);
    if (item == request.query.end()) return fallback;
    return std::ranges::find(off, item->second) == off.end();
}

Result<std::optional<int>> parseEdge(const HTTPRequest& request) {
    const auto item = request.query.find("maxEdge");
    if (item == request.query.end() || item->second.empty()) return std::nullopt;
    const std::string& text = item->second;
    int edge = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), edge);
    if (error != std::errc() || end != text.data() + text.size() || edge < 1) {
        return fail("maxEdge must be a whole number from 1");
    }
    return edge;
}

std::string_view contentType(ImageFormat format) {
    return format == ImageFormat::png ? "image/png" : "image/jpeg";
}

// The picture with its text, in pixels of the picture as it is sent.
HTTPResponse withText(const WindowCapture::Latest& latest, const ContentRect& content,
                      const PixelBuffer& picture, const Bytes& image,
                      const AirPlayFrameOptions& options, TextRecognizer& recognizer) {
    Json reply = {{"ok", true},
                  {"data", base64(image)},
                  {"mimeType", contentType(options.image.format)},
                  {"w", picture.width()},
                  {"h", picture.height()},
                  {"content", content.json()},
                  {"age_ms", std::round(latest.ageSeconds * 1000)}};
    const auto text = readText(recognizer, picture);
    if (!text) return airplayError(text.error().message, 500);
    reply["ocr"] = toJson(text->records);
    return HTTPResponse::json(reply);
}

}  // namespace

Result<AirPlayFrameOptions> AirPlayFrameOptions::parse(const HTTPRequest& request) {
    AirPlayFrameOptions options;
    if (request.path.ends_with(".jpg")) options.image.format = ImageFormat::jpeg;
    if (const auto format = request.query.find("format"); format != request.query.end()) {
        options.image.format = format->second == "png" ? ImageFormat::png : ImageFormat::jpeg;
    }
    options.image.maxEdge = TRY(parseEdge(request));
    options.crop = isOn(request, "crop", true);
    options.ocr = isOn(request, "ocr", false);
    return options;
}

HTTPResponse airplayError(std::string_view message, int status) {
    return HTTPResponse::json({{"ok", false}, {"error", message}}, status);
}

HTTPResponse airplayFrame(WindowCapture& capture, const AirPlayFrameOptions& options,
                          TextRecognizer& recognizer, const std::stop_token& clientGone) {
    const auto latest = capture.awaitLatest(kFirstFramePatience, clientGone);
    if (!latest) return airplayError(latest.error().message, latest.error().status);
    const ContentRect content = capture.content(latest->frame);
    const PixelBuffer whole = options.crop ? cropped(latest->frame, content.rect) : latest->frame;
    const PixelBuffer picture = scaledPicture(whole, {}, options.image.maxEdge);
    auto image = encodeSnapshot(picture, {.format = options.image.format});
    if (!image) return airplayError("couldn't read the frame", 500);
    if (options.ocr) return withText(*latest, content, picture, *image, options, recognizer);
    HTTPResponse response;
    response.contentType = contentType(options.image.format);
    response.body = *std::move(image);
    return response;
}

}  // namespace tandrel
