#pragma once

#include "reading/ink.h"

namespace tandrel {

// What looks like one line of text.
struct TextLine {
    Ink ink;
    // It lies on a photo or a map, where much looks like text that is none.
    bool onPicture = false;

    bool operator==(const TextLine&) const = default;
};

}  // namespace tandrel
