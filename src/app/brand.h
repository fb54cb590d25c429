#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QWidget>
#include <filesystem>
#include <string_view>
#include <vector>

#include "platform/desktop_settings.h"

// How Tandrel's windows look: the fonts, the colours, and the style sheet that is made of them.
namespace tandrel {

enum class ColorScheme { light, dark };

struct Brand {
    // What a colour is for; rules name them as "@text" and so on.
    struct Color {
        std::string_view role;
        const char* light;
        const char* dark;
    };
    // Text that stands on a ground somewhere in the windows.
    struct Pair {
        std::string_view text;
        std::string_view ground;
    };

    // Adds the font files of share/tandrel/fonts, and makes the product's font that of the windows
    // where it can be had. Needs the application object.
    static void registerFonts(const std::filesystem::path& share);

    // Gives a window, with all that is in it, these colours and rules; `more` are rules of its own.
    static void dress(QWidget& window, ColorScheme appearance, const QString& more = {});

    // What the person prefers; where the desktop does not say it, as its own windows are.
    static ColorScheme colorScheme(ColorPreference preferred);
    static QColor color(std::string_view role, ColorScheme appearance);
    static const std::vector<Pair>& pairs();
    // How much larger than usual the owner wants text, such as 2.
    static double textScale();
    // A length that goes with the text, in points of the screen.
    static int scaled(int points);

    // The ratio that WCAG 2.1 defines, 1 to 21.
    static double contrast(const QColor& one, const QColor& other);
};

}  // namespace tandrel
