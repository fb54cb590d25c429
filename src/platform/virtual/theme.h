#pragma once

#include "platform/virtual/geometry.h"
#include "platform/virtual/scenario.h"

namespace tandrel {

// The colors of one appearance, named for what they are for.
struct Theme {
    Color page;     // behind articles and sheets
    Color grouped;  // behind lists of cards
    Color card;
    Color label;
    Color secondary;  // details, captions, headers
    Color placeholder;
    Color separator;
    Color fill;  // search fields, switches that are off, slide controls
    Color tint;
    Color bar;
    Color switchOn;
};

// clang-format off
inline constexpr Theme kLightTheme{
    .page = rgb(0xFFFFFF), .grouped = rgb(0xF2F2F7), .card = rgb(0xFFFFFF),
    .label = rgb(0x000000), .secondary = rgb(0x6C6C72), .placeholder = rgb(0xA0A0A6),
    .separator = rgb(0xD1D1D6), .fill = rgb(0xE3E3E8), .tint = rgb(0x0070EB),
    .bar = rgb(0xF9F9F9), .switchOn = rgb(0x34C759)};
inline constexpr Theme kDarkTheme{
    .page = rgb(0x000000), .grouped = rgb(0x000000), .card = rgb(0x1C1C1E),
    .label = rgb(0xFFFFFF), .secondary = rgb(0x9A9AA1), .placeholder = rgb(0x6E6E73),
    .separator = rgb(0x38383A), .fill = rgb(0x2C2C2E), .tint = rgb(0x2C92FF),
    .bar = rgb(0x121214), .switchOn = rgb(0x30D158)};
// clang-format on

inline const Theme& theme(Appearance appearance) {
    return appearance == Appearance::dark ? kDarkTheme : kLightTheme;
}

}  // namespace tandrel
