#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/result.h"
#include "base/uuid.h"
#include "platform/virtual/geometry.h"
#include "platform/virtual/glyphs.h"

// What a virtual phone is and shows, as a scenario file says it. docs/virtual-phone.md describes
// the file, member by member; the values here carry the same names.
namespace tandrel {

enum class KeyboardLayout { us, german, russian };
enum class Appearance { light, dark };
enum class ScreenPower { awake, locked, asleep };

struct PhoneTraits {
    std::string id;
    std::string name;
    Uuid host;      // the phone as a Bluetooth central
    int width = 0;  // pixels, held upright
    int height = 0;
    double scale = 3;  // pixels a point
    KeyboardLayout keyboard = KeyboardLayout::us;
    Appearance appearance = Appearance::light;
    ScreenPower screen = ScreenPower::awake;
    bool passcode = true;  // a swipe up on the lock screen asks for one instead of opening
    bool assistiveTouch = true;
    bool paired = true;
    bool plugged = true;
    bool mirroring = true;    // mirrors its screen to this computer
    bool staleCache = false;  // knows older services until it is told that they changed
    std::string clock;        // "9:41"
    std::string date;         // "Tuesday, January 9"
};

// Something goes wrong with the phone, as its verbs of the same name do.
enum class Trouble {
    none,
    vanish,
    unplug,
    disconnectBluetooth,
    stopMirroring,
    freeze,
    goBlack,
    lock,
    sleep
};

// What happens when something is tapped; empty members do nothing.
struct Action {
    std::string go;     // a page's name
    std::string count;  // a counter that is raised by one
    Trouble trouble = Trouble::none;
    double seconds = 0;  // after which the trouble is over; 0: never

    bool operator==(const Action&) const = default;
};

struct Icon {
    std::string label;
    Color color;
    const Glyph* glyph = nullptr;
    Action tap;
};

enum class IconPlace { grid, dock };
struct IconsItem {
    IconPlace place = IconPlace::grid;
    std::vector<Icon> icons;
};

struct Row {
    std::string text;
    std::string detail;
    Color color;
    const Glyph* glyph = nullptr;
    std::string toggle;  // the name of the switch at its end; none when empty
    bool on = false;     // how that switch stands at first
    std::optional<Action> tap;
};

struct RowsItem {
    std::string header;
    std::string footer;
    std::vector<Row> rows;
};

enum class TextKind { body, title, headline, caption, amount };
enum class TextAlign { left, center };
struct TextItem {
    std::string text;
    TextKind kind = TextKind::body;
    TextAlign align = TextAlign::left;
};

enum class ButtonKind { filled, tinted, plain };
struct ButtonItem {
    std::string text;
    ButtonKind kind = ButtonKind::filled;
    Action tap;
};

enum class FieldKind { line, area };
struct FieldItem {
    std::string name;
    std::string placeholder;
    std::string text;
    FieldKind kind = FieldKind::line;
    bool focused = false;          // takes the keyboard when its page appears
    std::optional<Action> submit;  // on Return
};

struct ImageItem {
    double height = 0;
    Color color;
    const Glyph* glyph = nullptr;
};

// A control that acts when its knob is dragged to the right end.
struct SlideItem {
    std::string text;
    Action done;
};

struct SpaceItem {
    double height = 0;
};

using Item = std::variant<IconsItem, RowsItem, TextItem, ButtonItem, FieldItem, ImageItem,
                          SlideItem, SpaceItem>;

// The switches that set the phone itself.
inline constexpr std::string_view kAssistiveTouchSwitch = "assistiveTouch";
inline constexpr std::string_view kDarkModeSwitch = "darkMode";

enum class PageKind { home, list, article, sheet };

struct LaterAction {
    double seconds = 0;
    Action action;
};

struct Page {
    std::string name;
    PageKind kind = PageKind::list;
    std::string title;
    std::string back;                  // the page that the back button leads to; none when empty
    std::string over;                  // a sheet's page underneath
    std::optional<Action> sideButton;  // on a double click of the side button
    std::optional<LaterAction> later;
    std::vector<Item> items;

    const FieldItem* findField(std::string_view field) const;
};

struct Scenario {
    PhoneTraits phone;
    std::string home;
    std::string start;
    std::vector<Page> pages;

    // None when there is no page of the name; every name inside a scenario that was read has one.
    const Page* find(std::string_view page) const;
    // Every switch, the phone's own among them, as it stands at first.
    std::map<std::string, bool, std::less<>> switches() const;
};

inline constexpr std::size_t kLargestScenario = 1'000'000;  // bytes

// Reads a scenario's text. `file` is the name that errors begin with; then comes the place as a
// JSON pointer (RFC 6901) and what must be there.
Result<Scenario> parseScenario(std::string_view text, const std::string& file);
Result<Scenario> loadScenario(const std::filesystem::path& file);

}  // namespace tandrel
