#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include <fmt/format.h>

#include "platform/virtual/frame_painter.h"
#include "text/known_frame.h"

namespace tandrel {

namespace {

PixelBox inPixels(const Rect& rect, double scale) {
    return {static_cast<int>(std::floor(rect.x * scale)),
            static_cast<int>(std::floor(rect.y * scale)),
            static_cast<int>(std::ceil((rect.x + rect.width) * scale)),
            static_cast<int>(std::ceil((rect.y + rect.height) * scale))};
}

bool isAmount(const std::string& text) {
    const bool hasSign = std::ranges::any_of(std::array{"$", "€", "£"},
                                             [&](const char* sign) { return text.contains(sign); });
    return hasSign && text.find_first_of("0123456789") != std::string::npos;
}

// What is drawn later covers lines, wholly or in part.
void cover(std::vector<KnownLine>& lines, const PixelBox& box, double alpha) {
    constexpr double kThin = 0.15;
    if (alpha < kThin) return;
    std::erase_if(lines,
                  [&](const KnownLine& line) { return alpha == 1 && box.contains(*line.box); });
    for (KnownLine& line : lines) {
        if (!line.box->intersected(box).empty()) line.isOptional = true;
    }
}

class KnownLines {
 public:
    KnownLines(Fonts& fonts, double scale, double width, double height)
        : fonts_(fonts), scale_(scale), screen_(inPixels({0, 0, width, height}, scale)) {}

    void add(const DisplayLayer& layer, double up) {
        up_ = up;
        for (const Shape& shape : layer.shapes) std::visit(*this, shape);
    }
    void operator()(const TextShape& shape) {
        for (const SetLine& line : fonts_.lines(shape)) {
            const PixelBox box = moved(line.ink);
            const PixelBox shown = box.intersected(screen_);
            if (shown.empty()) continue;
            lines.push_back({.text = line.text,
                             .box = shown,
                             .isAmount = isAmount(line.text),
                             .isOptional = shown != box || line.isCut});
        }
    }
    void operator()(const BoxShape& shape) { cover(lines, moved(shape.rect), shape.color.alpha); }
    void operator()(const GradientShape& shape) { cover(lines, moved(shape.rect), 1); }
    void operator()(const GlyphShape&) {}
    void operator()(const PictureShape& shape) { cover(lines, moved(shape.rect), 1); }

    std::vector<KnownLine> lines;

 private:
    PixelBox moved(const Rect& rect) const {
        return inPixels({rect.x, rect.y - up_, rect.width, rect.height}, scale_);
    }

    Fonts& fonts_;
    const double scale_;
    const PixelBox screen_;
    double up_ = 0;
};

KnownFrame framedPage(const std::string& name, PhoneModel& model, Fonts& fonts, double scale) {
    FramePainter painter(fonts, scale);
    KnownFrame frame{.name = name, .picture = painter.paint(model), .lines = {}};
    const auto look = model.look();
    if (look.display == nullptr) return frame;
    KnownLines known(fonts, scale, look.width, look.height);
    known.add(look.display->content, look.scroll);
    known.add(look.display->bars, 0);
    frame.lines = std::move(known.lines);
    return frame;
}

}  // namespace

FrameSet drawPhonePages(const std::string& folder) {
    FrameSet set{.name = "virtual phone", .frames = {}};
    std::error_code error;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        files.push_back(entry.path());
    }
    std::ranges::sort(files);
    Fonts fonts;
    for (const auto& file : files) {
        auto scenario = loadScenario(file);
        if (!scenario) {
            std::fprintf(stderr, "%s\n", scenario.error().message.c_str());
            continue;
        }
        scenario->phone.screen = ScreenPower::awake;
        for (const Page& page : scenario->pages) {
            PhoneModel model(*scenario, fonts);
            model.showPage(page.name);
            set.frames.push_back(framedPage(fmt::format("{} {}", file.stem().string(), page.name),
                                            model, fonts, scenario->phone.scale));
        }
    }
    return set;
}

}  // namespace tandrel
