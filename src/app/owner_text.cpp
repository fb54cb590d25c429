#include "app/owner_text.h"

#include <QCoreApplication>

namespace tandrel {

std::string ownerText(const char* context, const char* english) {
    return QCoreApplication::translate(context, english).toStdString();
}

std::string filledIn(const std::string& text, std::initializer_list<std::string> values) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t which =
            text[i] == '%' && i + 1 < text.size() ? static_cast<std::size_t>(text[i + 1] - '1') : 9;
        if (which >= values.size()) {
            result += text[i];
            continue;
        }
        result += values.begin()[which];
        ++i;
    }
    return result;
}

}  // namespace tandrel
