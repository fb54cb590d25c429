#pragma once

#include <map>
#include <set>
#include <string>

#include "platform/virtual/display_list.h"
#include "platform/virtual/fonts.h"
#include "platform/virtual/scenario.h"

// Where everything stands on the phone's screens.
namespace tandrel {

// How the phone is held and set, and what its owner entered; what a page's look depends on besides
// the page.
struct LayoutState {
    double width = 0;  // points, as held now
    double height = 0;
    Appearance appearance = Appearance::light;
    std::map<std::string, std::string, std::less<>> fields;  // texts by field
    std::map<std::string, bool, std::less<>> toggles;
    std::string focus;       // the field that takes the keyboard; none when empty
    std::string slide;       // the text of the slide control that is dragged; none when empty
    double slideOffset = 0;  // points that its knob was dragged
};

DisplayList layOutPage(const Scenario& scenario, const Page& page, const LayoutState& state,
                       Fonts& fonts);

enum class LockPrompt { none, passcode };
DisplayList layOutLockScreen(const PhoneTraits& phone, const LayoutState& state, LockPrompt prompt);

// The search screen with what was typed, and the icons it found, the best first.
DisplayList layOutSearch(const PhoneTraits& phone, const LayoutState& state,
                         const std::string& query, const std::vector<const Icon*>& found);

// The icons whose label fits the query, the best first: labels that begin with it, then labels with
// a word that does. Letters count the same in either case. Nothing fits an empty query.
std::vector<const Icon*> searchIcons(const Scenario& scenario, const std::string& query);

}  // namespace tandrel
