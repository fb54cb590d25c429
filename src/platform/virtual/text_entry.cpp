#include "platform/virtual/text_entry.h"

#include "base/unicode.h"

namespace tandrel {

void enterKey(std::string& entry, std::uint16_t usage, std::string_view keyText) {
    if (usage == kBackspaceKey) {
        const auto count = graphemeCount(entry);
        if (count > 0) entry = firstGraphemes(entry, count - 1);
    } else if (entry.size() + keyText.size() <= kLongestEntry) {
        entry += keyText;
    }
}

}  // namespace tandrel
