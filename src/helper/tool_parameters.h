#pragma once

#include <array>

#include "helper/parameters.h"

// What each tool takes.
namespace tandrel::parameters {

using Kind = Parameter::Kind;
using Need = Parameter::Need;

inline constexpr std::array<std::string_view, 2> kUnits = {"pixels", "fractions"};
inline constexpr std::array<std::string_view, 7> kModifiers = {"cmd",    "command", "shift",  "alt",
                                                               "option", "ctrl",    "control"};

inline constexpr Parameter kDevice = {
    .name = "device",
    .description =
        "Which iPhone: its id or name as iphone_list_devices gives it. Leave it out when "
        "there is only one.",
    .least = 1,
    .most = 200};
inline constexpr Parameter kUnit = {
    .name = "units",
    .kind = Kind::choice,
    .description =
        "Unit of the point: pixels of the last picture you got of this iPhone, or "
        "fractions from 0 to 1 of its screen's width and height.",
    .choices = kUnits,
    .standard = R"("pixels")"};

// No picture is longer than 1568 pixels; the picture at hand may be smaller, which is checked too.
consteval Parameter coordinate(std::string_view name, std::string_view description) {
    return {.name = name,
            .kind = Kind::number,
            .description = description,
            .need = Need::required,
            .least = 0,
            .most = 1568};
}
inline constexpr Parameter kX = coordinate("x", "From the picture's left edge.");
inline constexpr Parameter kY = coordinate("y", "From the picture's top edge.");

inline constexpr std::array<Parameter, 2> kLook = {{
    kDevice,
    {.name = "longest_edge",
     .kind = Kind::integer,
     .description = "The picture's longer side at most, in pixels. Smaller is cheaper to read and "
                    "shows less.",
     .least = 200,
     .most = 1568,
     .standard = "1568"},
}};
inline constexpr std::array<Parameter, 4> kPoint = {kX, kY, kUnit, kDevice};
inline constexpr std::array<Parameter, 5> kLongPress = {{
    kX,
    kY,
    {.name = "seconds",
     .kind = Kind::number,
     .description = "How long to hold, in seconds.",
     .least = 0.3,
     .most = 10,
     .standard = "1.0"},
    kUnit,
    kDevice,
}};
inline constexpr std::array<Parameter, 7> kSwipe = {{
    coordinate("x1", "Where the finger goes down, from the left."),
    coordinate("y1", "Where the finger goes down, from the top."),
    coordinate("x2", "Where it is lifted, from the left."),
    coordinate("y2", "Where it is lifted, from the top."),
    {.name = "seconds",
     .kind = Kind::number,
     .description = "How long the movement takes, in seconds. Longer scrolls without a fling.",
     .least = 0.05,
     .most = 10,
     .standard = "0.3"},
    kUnit,
    kDevice,
}};
inline constexpr std::array<Parameter, 4> kNudge = {{
    {.name = "dx",
     .kind = Kind::integer,
     .description = "To the right, in mouse counts; negative is to the left.",
     .need = Need::required,
     .least = -2000,
     .most = 2000},
    {.name = "dy",
     .kind = Kind::integer,
     .description = "Down, in mouse counts; negative is up.",
     .need = Need::required,
     .least = -2000,
     .most = 2000},
    {.name = "click",
     .kind = Kind::yesNo,
     .description = "Click where the pointer then is.",
     .standard = "false"},
    kDevice,
}};
// A character takes up to 0.12 s, and an answer must come within a minute.
inline constexpr std::array<Parameter, 2> kType = {{
    {.name = "text",
     .description = "What to type: characters of a US keyboard, line feed for Return, tab.",
     .need = Need::required,
     .least = 1,
     .most = 400},
    kDevice,
}};
inline constexpr std::array<Parameter, 3> kKey = {{
    {.name = "key",
     .description =
         "return, escape, delete (backwards), forwarddelete, tab, space, up, down, left, "
         "right, home (the keyboard's), end, pageup, pagedown, or one character.",
     .need = Need::required,
     .least = 1,
     .most = 20},
    {.name = "modifiers",
     .kind = Kind::choices,
     .description = "Keys held meanwhile.",
     .choices = kModifiers},
    kDevice,
}};
inline constexpr std::array<Parameter, 1> kPhoneOnly = {kDevice};
inline constexpr std::array<Parameter, 2> kMatch = {{
    {.name = "force",
     .kind = Kind::yesNo,
     .description = "Match all anew, also what is matched already.",
     .standard = "false"},
    {.name = "probe",
     .kind = Kind::yesNo,
     .description =
         "Move the pointer and watch the screens even where only one answer is possible.",
     .standard = "false"},
}};
inline constexpr std::array<Parameter, 2> kPair = {{
    {.name = "host",
     .description = "The Bluetooth connection: one of \"unmatchedHosts\" of iphone_get_status.",
     .need = Need::required,
     .least = 36,
     .most = 36},
    kDevice,
}};
inline constexpr std::array<Parameter, 3> kWait = {{
    {.name = "longest",
     .kind = Kind::number,
     .description = "Give up after this many seconds.",
     .least = 0.3,
     .most = 30,
     .standard = "5.0"},
    {.name = "quiet",
     .kind = Kind::number,
     .description = "How long nothing must change, in seconds.",
     .least = 0.1,
     .most = 5,
     .standard = "0.25"},
    kDevice,
}};

}  // namespace tandrel::parameters
