#include <algorithm>
#include <cstdio>

#include "base/file.h"
#include "base/json.h"
#include "image/image_reader.h"
#include "text/known_frame.h"

namespace tandrel {

namespace {

// Chinese, Japanese and Korean, in UTF-8.
bool isOfOtherScript(const std::string& text) {
    return std::ranges::any_of(text, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0xE3 && byte <= 0xED;
    });
}

KnownFrame knownFrame(const Json& entry, PixelBuffer picture) {
    KnownFrame frame{.name = entry.value("file", ""), .picture = std::move(picture), .lines = {}};
    std::string payLabel;
    if (entry.contains("tap") && entry["tap"].value("ask_owner", "") == "yes") {
        payLabel = entry["tap"].value("label", "");
    }
    for (const Json& line : entry["lines"]) {
        const auto text = line.get<std::string>();
        const bool hasSign = text.find_first_of("$") != std::string::npos ||
                             text.find("€") != std::string::npos ||
                             text.find("£") != std::string::npos;
        const bool hasDigit = text.find_first_of("0123456789") != std::string::npos;
        frame.lines.push_back({.text = text,
                               .box = std::nullopt,
                               .isAmount = hasSign && hasDigit,
                               .isPayLabel = text == payLabel,
                               .isOptional = isOfOtherScript(text)});
    }
    return frame;
}

}  // namespace

FrameSet loadScreenshots(const std::string& folder) {
    FrameSet set{.name = "screenshots", .frames = {}};
    const auto index = readFile(folder + "/index.json", 64 * 1024 * 1024);
    if (!index) {
        std::fprintf(stderr, "%s\n", index.error().message.c_str());
        return set;
    }
    const Json json = Json::parse(*index, nullptr, false);
    if (!json.is_object() || !json.contains("images")) {
        std::fprintf(stderr, "%s/index.json has no images\n", folder.c_str());
        return set;
    }
    for (const Json& entry : json["images"]) {
        auto picture = readImage(folder + "/" + entry.value("file", ""));
        if (!picture) {
            std::fprintf(stderr, "%s\n", picture.error().message.c_str());
            continue;
        }
        set.frames.push_back(knownFrame(entry, *std::move(picture)));
    }
    return set;
}

}  // namespace tandrel
