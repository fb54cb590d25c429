#include "app/brand.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPalette>
#include <QScreen>
#include <algorithm>
#include <cmath>

namespace tandrel {
namespace {

constexpr const char* kFamily = "Inter";
constexpr double kUsualDotsPerInch = 96;
constexpr double kTextPoints = 10.5;

// Longer roles stand before those that they begin with: they are replaced in this order.
// clang-format off
constexpr Brand::Color kColors[] = {
    {"window",       "#f5f5f7", "#1c1c1e"},
    {"surface",      "#ffffff", "#2a2a2d"},
    {"sidebar",      "#ececf0", "#232326"},
    {"hover",        "#e2e2e8", "#37373b"},
    {"selected",     "#d9e6fb", "#233a5e"},
    {"border",       "#d2d2d7", "#48484c"},
    {"text",         "#1d1d1f", "#f5f5f7"},
    {"secondary",    "#515154", "#b8b8bf"},
    {"link",         "#0a4fb8", "#8ab6ff"},
    {"accentHover",  "#084cb0", "#1f5fc4"},
    {"accent",       "#0a5bd3", "#1d63d0"},
    {"onAccent",     "#ffffff", "#ffffff"},
    {"good",         "#146c2e", "#6fd88c"},
    {"attention",    "#9a3412", "#ffb57a"},
    {"bad",          "#b3261e", "#ff9d94"},
    {"note",         "#fff4e5", "#3d2f1f"},
};

const std::vector<Brand::Pair> kPairs = {
    {"text", "window"},      {"text", "surface"},      {"text", "sidebar"},   {"text", "hover"},
    {"text", "selected"},    {"text", "note"},         {"secondary", "window"},
    {"secondary", "surface"}, {"secondary", "sidebar"}, {"secondary", "selected"},
    {"secondary", "hover"},  {"secondary", "note"},
    {"link", "window"},      {"link", "surface"},      {"link", "hover"},
    {"onAccent", "accent"},  {"onAccent", "accentHover"},
    {"good", "window"},      {"good", "surface"},      {"good", "sidebar"},   {"good", "selected"},
    {"attention", "window"}, {"attention", "surface"}, {"attention", "note"},
    {"attention", "sidebar"}, {"bad", "window"},       {"bad", "surface"},
};
// clang-format on

// Sizes in points grow with the owner's text size; lines and corners stay as they are.
constexpr const char* kStyleRules = R"(
    * { font-family: "Inter", sans-serif; font-size: 10.5pt; color: @text; }
    QWidget[ground="window"] { background: @window; }
    QWidget[ground="sidebar"] { background: @sidebar; }
    QFrame[ground="card"] { background: @surface; border: 1px solid @border; border-radius: 10px; }
    QFrame[ground="note"] { background: @note; border: 1px solid @attention; border-radius: 10px; }
    QScrollArea, QScrollArea > QWidget > QWidget { background: transparent; border: none; }
    QLabel[role="product"] { font-size: 13pt; font-weight: 700; }
    QLabel[role="title"] { font-size: 18pt; font-weight: 700; }
    QLabel[role="heading"] { font-weight: 600; }
    QLabel[role="secondary"] { color: @secondary; }
    QLabel[role="good"] { color: @good; font-weight: 600; }
    QLabel[role="attention"] { color: @attention; font-weight: 600; }
    QLabel[role="bad"] { color: @bad; font-weight: 600; }
    QLabel[role="code"] { font-family: "DejaVu Sans Mono", monospace; font-size: 9.5pt;
        background: @window; border: 1px solid @border; border-radius: 6px; padding: 8px; }
    QPushButton { background: @surface; border: 1px solid @border; border-radius: 8px;
        padding: 7px 16px; font-weight: 600; }
    QPushButton:hover { background: @hover; }
    QPushButton:focus { border: 2px solid @link; padding: 6px 15px; }
    QPushButton:disabled { color: @secondary; background: @window; }
    QPushButton[role="primary"] { background: @accent; color: @onAccent;
        border: 1px solid @accent; }
    QPushButton[role="primary"]:hover { background: @accentHover; }
    QPushButton[role="primary"]:focus { border: 2px solid @text; }
    QPushButton[role="primary"]:disabled { color: @secondary; background: @window;
        border: 1px solid @border; }
    QPushButton[role="step"] { background: transparent; border: 2px solid transparent;
        text-align: left; padding: 8px 10px; font-weight: 500; }
    QPushButton[role="step"]:hover { background: @hover; }
    QPushButton[role="step"]:checked { background: @selected; font-weight: 600; }
    QPushButton[role="step"]:focus { border: 2px solid @link; }
    QRadioButton, QCheckBox { spacing: 8px; padding: 4px; border: 2px solid transparent;
        border-radius: 6px; }
    QRadioButton:focus, QCheckBox:focus { border: 2px solid @link; }
    QTableView { background: @surface; alternate-background-color: @window;
        border: 1px solid @border; border-radius: 8px; gridline-color: @border;
        selection-background-color: @selected; selection-color: @text; }
    QTableView:focus { border: 2px solid @link; }
    QTableView::item { padding: 5px 8px; }
    QHeaderView, QHeaderView::section { background: @window; color: @secondary;
        border: none; font-weight: 600; }
    QHeaderView::section { padding: 7px 3px; border-bottom: 1px solid @border; }
    QMenu { background: @surface; border: 1px solid @border; padding: 6px; }
    QMenu::item { padding: 6px 26px 6px 34px; border-radius: 6px; color: @text; }
    QMenu::icon { left: 9px; }
    QMenu::indicator { left: 10px; width: 14px; height: 14px; }
    QMenu::item:selected { background: @selected; }
    QMenu::item:disabled { color: @secondary; }
    QMenu::separator { height: 1px; background: @border; margin: 6px 4px; }
    QScrollBar:vertical { background: transparent; width: 12px; margin: 2px; }
    QScrollBar::handle:vertical { background: @secondary; border-radius: 4px; min-height: 32px; }
    QScrollBar:horizontal { background: transparent; height: 12px; margin: 2px; }
    QScrollBar::handle:horizontal { background: @secondary; border-radius: 4px;
        min-width: 32px; }
    QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
    QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
    QMessageBox QLabel#qt_msgbox_label { font-size: 12.5pt; font-weight: 600; min-width: 26em; }
    QToolTip { background: @surface; color: @text; border: 1px solid @border; }
)";

double relativeLuminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

QString withColors(QString rules, ColorScheme appearance) {
    for (const Brand::Color& color : kColors) {
        const QString name =
            "@" + QString::fromUtf8(color.role.data(), static_cast<qsizetype>(color.role.size()));
        rules.replace(name, appearance == ColorScheme::dark ? color.dark : color.light);
    }
    return rules;
}

// For what no rule paints: marks of boxes, arrows, bars, selected text.
QPalette palette(ColorScheme appearance) {
    const auto color = [=](std::string_view role) { return Brand::color(role, appearance); };
    QPalette result(color("surface"), color("window"));
    result.setColor(QPalette::WindowText, color("text"));
    result.setColor(QPalette::Text, color("text"));
    result.setColor(QPalette::ButtonText, color("text"));
    result.setColor(QPalette::PlaceholderText, color("secondary"));
    result.setColor(QPalette::Base, color("surface"));
    result.setColor(QPalette::AlternateBase, color("window"));
    result.setColor(QPalette::Highlight, color("accent"));
    result.setColor(QPalette::HighlightedText, color("onAccent"));
    result.setColor(QPalette::Link, color("link"));
    return result;
}

}  // namespace

void Brand::registerFonts(const std::filesystem::path& share) {
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(share / "tandrel/fonts", none)) {
        QFontDatabase::addApplicationFont(QString::fromStdString(entry.path().string()));
    }
    QApplication::setStyle("Fusion");
    QFont font = QApplication::font();
    if (QFontDatabase::hasFamily(kFamily)) font.setFamily(kFamily);
    font.setPointSizeF(kTextPoints);
    QApplication::setFont(font);
}

void Brand::dress(QWidget& window, ColorScheme appearance, const QString& more) {
    window.setPalette(palette(appearance));
    window.setStyleSheet(withColors(kStyleRules + more, appearance));
}

ColorScheme Brand::colorScheme(ColorPreference preferred) {
    if (preferred == ColorPreference::dark) return ColorScheme::dark;
    if (preferred == ColorPreference::light) return ColorScheme::light;
    constexpr double kDark = 0.5;
    const QColor window = QGuiApplication::palette().color(QPalette::Window);
    return window.lightnessF() < kDark ? ColorScheme::dark : ColorScheme::light;
}

QColor Brand::color(std::string_view role, ColorScheme appearance) {
    const auto* found = std::ranges::find(kColors, role, &Color::role);
    return QColor(appearance == ColorScheme::dark ? found->dark : found->light);
}

const std::vector<Brand::Pair>& Brand::pairs() { return kPairs; }

double Brand::textScale() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return std::clamp(screen->logicalDotsPerInchY() / kUsualDotsPerInch, 1.0, 3.0);
}

int Brand::scaled(int points) { return static_cast<int>(std::lround(points * textScale())); }

double Brand::contrast(const QColor& one, const QColor& other) {
    const double a = relativeLuminance(one);
    const double b = relativeLuminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

}  // namespace tandrel
