#pragma once

#include <initializer_list>
#include <string>

// Sentences for the owner that are made without Qt's own types, in the owner's language. The
// catalogue (scripts/translations.sh) is made from the calls of `ownerText` and from tables whose
// texts stand in QT_TRANSLATE_NOOP.
namespace tandrel {

// The text in the owner's language; as it stands where no catalogue has it. Any thread.
std::string ownerText(const char* context, const char* english);

// Puts the values in the places of %1, %2 …; what stands in a value is left as it is.
std::string filledIn(const std::string& text, std::initializer_list<std::string> values);

}  // namespace tandrel
