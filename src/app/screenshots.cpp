#include "app/screenshots.h"

#include <QApplication>
#include <QTemporaryFile>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include <fmt/format.h>

#include "app/layout_check.h"
#include "app/qt_main_loop.h"
#include "app/sample_windows.h"

namespace tandrel {
namespace {

constexpr const char* kScreenshotsUsage =
    "usage: tandrel-app --render-steps DIR [--dark] [--scale 1 to 3]";
constexpr int kWholeDotsPerInch = 96;
constexpr int kScreenWidth = 1600;
constexpr int kScreenHeight = 1200;

Result<double> parseScale(const std::string& text) {
    double scale = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, scale);
    const bool fits = error == std::errc() && rest == end && scale >= 1 && scale <= 3;
    if (!fits) return fail(kScreenshotsUsage, 2);
    return scale;
}

// A screen without a display, on which text alone is so many times as large as usual.
bool describeScreen(QTemporaryFile& file, double textScale) {
    const int dots = static_cast<int>(std::lround(textScale * kWholeDotsPerInch));
    const std::string json =
        fmt::format(R"({{"screens": [{{"name": "none", "x": 0, "y": 0, "width": {}, "height": {}, )"
                    R"("logicalDpi": {}, "logicalBaseDpi": {}, "dpr": 1}}]}})",
                    kScreenWidth, kScreenHeight, dots, dots);
    return file.open() && file.write(json.data(), static_cast<qint64>(json.size())) > 0 &&
           file.flush();
}

// Shown off screen so that layouts and styles have settled.
QImage pictureOf(QWidget& widget) {
    widget.setAttribute(Qt::WA_DontShowOnScreen);
    widget.ensurePolished();
    widget.show();
    QApplication::processEvents();
    return widget.grab().toImage();
}

Result<int> drawOne(const SampleWindow& sample, const std::filesystem::path& folder) {
    const QImage picture = pictureOf(*sample.widget);
    const auto file = folder / (sample.name + ".png");
    if (!picture.save(QString::fromStdString(file.string()), "PNG")) {
        return fail("can't write " + file.string());
    }
    fmt::print("{} {}x{}\n", file.string(), picture.width(), picture.height());
    const QStringList faults =
        layoutFaults(*sample.widget) + contrastFaults(*sample.widget, picture);
    for (const QString& fault : faults) fmt::print("  fault: {}\n", fault.toStdString());
    return static_cast<int>(faults.size());
}

}  // namespace

Result<Screenshots::Options> Screenshots::parse(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--dark") {
            options.appearance = ColorScheme::dark;
        } else if (word == "--scale" && i + 1 < arguments.size()) {
            options.textScale = TRY(parseScale(arguments[++i]));
        } else if (options.folder.empty() && !word.empty() && !word.starts_with("-")) {
            options.folder = word;
        } else {
            return fail(kScreenshotsUsage, 2);
        }
    }
    if (options.folder.empty()) return fail(kScreenshotsUsage, 2);
    return options;
}

int Screenshots::render(const std::vector<std::string>& arguments, const AppInfo& info) {
    const auto options = parse(arguments);
    if (!options) {
        fmt::print(stderr, "{}\n", options.error().message);
        return 2;
    }
    QTemporaryFile screen;
    if (!describeScreen(screen, options->textScale)) {
        fmt::print(stderr, "can't write {}\n", screen.fileTemplate().toStdString());
        return 1;
    }
    const std::string platform = "offscreen:configfile=" + screen.fileName().toStdString();
    ::setenv("QT_QPA_PLATFORM", platform.c_str(), 1);
    ::setenv("QT_LOGGING_RULES", "default.warning=false", 1);  // on what only a display can do
    const QtMainLoop application;
    Brand::registerFonts(info.bundle / "share");
    const auto faults = draw(*options, info);
    if (!faults) fmt::print(stderr, "{}\n", faults.error().message);
    return faults && *faults == 0 ? 0 : 1;
}

Result<int> Screenshots::draw(const Options& options, const AppInfo& info) {
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (error)
        return fail(fmt::format("can't make {}: {}", options.folder.string(), error.message()));
    const auto samples = TRY(makeSampleWindows(options.appearance, info));
    int faults = 0;
    for (const SampleWindow& sample : samples) faults += TRY(drawOne(sample, options.folder));
    fmt::print("{} pictures, {} faults\n", samples.size(), faults);
    return faults;
}

}  // namespace tandrel
