#include "payments/printable.h"

#include "base/regex.h"

namespace tandrel {

std::string printable(std::string_view text) {
    static const Regex unsafe(R"([\p{Cc}\p{Bidi_Control}\u2028\u2029])", Regex::Case::sensitive);
    return unsafe.replaceAll(text, " ");
}

}  // namespace tandrel
