#pragma once

#include <cstdio>
#include <string>
#include <utility>

namespace tandrel {

// What a function prints to the file that it is given, and the status that it returns.
template <typename Print>
std::pair<int, std::string> printed(Print print) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&text, &size);
    const int status = print(out);
    std::fclose(out);
    std::pair<int, std::string> result{status, std::string(text, size)};
    free(text);
    return result;
}

}  // namespace tandrel
