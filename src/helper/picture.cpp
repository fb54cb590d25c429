#include "helper/picture.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "base/base64.h"

namespace tandrel {
namespace {

struct Form {
    std::string_view format;
    std::string_view mimeType;
    double scale;
};

// From the best to the smallest; the first that fits is delivered.
constexpr std::array<Form, 5> kForms = {{
    {"png", "image/png", 1.0},
    {"jpeg", "image/jpeg", 1.0},
    {"jpeg", "image/jpeg", 0.75},
    {"jpeg", "image/jpeg", 0.5},
    {"jpeg", "image/jpeg", 0.25},
}};

// A JPEG below that shows flat colours and text, of which a PNG will be small enough too.
constexpr std::size_t kFlatJpegBytes = 150'000;

std::size_t bytesOf(const std::string& base64Text) {
    const auto padding = std::ranges::count(
        std::string_view(base64Text)
            .substr(base64Text.size() - std::min<std::size_t>(base64Text.size(), 2)),
        '=');
    return base64Text.size() / 4 * 3 - static_cast<std::size_t>(padding);
}

std::unexpected<Error> notUnderstood(std::string_view what) {
    return fail(fmt::format("Tandrel's answer could not be understood: {}.", what), kBadReply);
}

// A device identifier that reads as a number comes as one.
std::string phoneIn(const Json& reply) {
    const auto phone = reply.find("X-Device");
    if (phone == reply.end()) return {};
    return phone->is_string() ? phone->get<std::string>() : dumpJson(*phone);
}

int edgeIn(const Json& reply, const char* key) {
    const double edge = numberMember(reply, key).value_or(0);
    return edge >= 1 && edge <= kLongestEdge ? static_cast<int>(edge) : 0;
}

Result<Picture> pictureIn(Json reply, const Form& form) {
    auto image = reply.find("image");
    if (image == reply.end() || !image->is_string()) return notUnderstood("it holds no picture");
    Picture picture{.phone = phoneIn(reply),
                    .size = {edgeIn(reply, "X-Image-Width"), edgeIn(reply, "X-Image-Height")},
                    .data = std::move(image->get_ref<std::string&>()),
                    .mimeType = std::string(form.mimeType)};
    if (textMember(reply, "mimeType") != form.mimeType) {
        return notUnderstood("the picture is of another kind than asked for");
    }
    if (picture.phone.empty()) return notUnderstood("it does not name the iPhone");
    if (picture.size.width == 0 || picture.size.height == 0) {
        return notUnderstood("the picture's size is missing or too large");
    }
    reply.erase(image);
    picture.reply = std::move(reply);
    return picture;
}

// A look's reply. The picture is nearly all of it and needs no reading, so it is cut out before the
// rest is parsed: inside a JSON text a quotation mark is escaped, so the mark cannot stand in one.
Result<Json> lookIn(const ClientResponse& response) {
    constexpr std::string_view kMark = "\"image\":\"";
    const std::string_view text(reinterpret_cast<const char*>(response.body.data()),
                                response.body.size());
    const std::size_t mark = text.find(kMark);
    const std::size_t begin = mark + kMark.size();
    const std::size_t end = mark == std::string_view::npos ? mark : text.find('"', begin);
    if (end == std::string_view::npos) return jsonOf(response);
    const std::string_view data = text.substr(begin, end - begin);
    if (data.find('\\') != std::string_view::npos) return jsonOf(response);
    std::string rest(text.substr(0, begin));
    rest += text.substr(end);
    auto reply = parseJson(rest);
    if (!reply || !reply->is_object()) return notUnderstood("it is not a JSON object");
    (*reply)["image"] = std::string(data);
    return reply;
}

// A screenshot's reply in the form of a look's.
Json asLook(const ClientResponse& response) {
    Json reply = {{"image", base64(response.body)}, {"mimeType", response.contentType}};
    const auto add = [&](const char* key, const char* header) {
        const auto value = response.headers.find(header);
        if (value == response.headers.end()) return;
        const auto number = parseJson(value->second);
        reply[key] = number && number->is_number_integer() ? *number : Json(value->second);
    };
    add("X-Device", "x-device");
    add("X-Image-Width", "x-image-width");
    add("X-Image-Height", "x-image-height");
    return reply;
}

// The age of the newest frame, which a screenshot's reply does not tell.
void addFrameAge(const ToolCall& call, Picture& picture) {
    const auto reply = getJsonFromEngine("/devices", call.limits());
    if (!reply || !reply->contains("devices")) return;
    for (const Json& device : (*reply)["devices"]) {
        if (textMember(device, "id") != picture.phone) continue;
        if (const auto age = numberMember(device, "frameAge")) picture.reply["frameAge"] = *age;
    }
}

Result<Picture> fetch(const ToolCall& call, PictureKind kind, const Form& form) {
    const double longest = numberMember(call.arguments, "longest_edge").value_or(kLongestEdge);
    QueryText query;
    query.add("format", form.format)
        .add("maxEdge", std::to_string(static_cast<int>(longest * form.scale)));
    if (const auto phone = textMember(call.arguments, "device")) query.add("device", *phone);
    if (kind == PictureKind::look) {
        const ClientResponse response = TRY(getFromEngine("/look" + query.text(), call.limits()));
        return pictureIn(TRY(lookIn(response)), form);
    }
    const ClientResponse response = TRY(getFromEngine("/screenshot" + query.text(), call.limits()));
    return pictureIn(asLook(response), form);
}

}  // namespace

Result<Picture> takePicture(const ToolCall& call, PictureKind kind) {
    for (std::size_t i = call.memory.expectsPng() ? 0 : 1; i < kForms.size(); ++i) {
        Picture picture = TRY(fetch(call, kind, kForms[i]));
        const std::size_t bytes = bytesOf(picture.data);
        if (bytes > kMostPictureBytes) continue;
        if (kind == PictureKind::screenshot) addFrameAge(call, picture);
        // One that nobody waits for any more is not the last that the assistant saw.
        if (!call.stop.stop_requested()) call.memory.remember(picture.phone, picture.size);
        call.memory.expectPng(i == 0 || bytes < kFlatJpegBytes);
        return picture;
    }
    return fail(fmt::format("The picture of the screen is larger than {} bytes in every form.",
                            kMostPictureBytes));
}

}  // namespace tandrel
