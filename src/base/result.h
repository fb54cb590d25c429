#pragma once

#include <expected>
#include <string>
#include <utility>

namespace tandrel {

// An expected failure: one whole sentence for the assistant or the owner, passed on unchanged, and
// the HTTP status with which the API replies it.
struct Error {
    std::string message;
    int status = 400;

    bool operator==(const Error&) const = default;
};

template <typename T>
using Result = std::expected<T, Error>;

inline std::unexpected<Error> fail(std::string message, int status = 400) {
    return std::unexpected(Error{std::move(message), status});
}

}  // namespace tandrel

// Unwraps a Result or returns its error from the enclosing function:
//   const Device device = TRY(find(name));
#define TRY(expression)                                            \
    ({                                                             \
        auto&& tryResult = (expression);                           \
        if (!tryResult) return std::unexpected(tryResult.error()); \
        *std::move(tryResult);                                     \
    })

// The same for Result<void>.
#define TRY_VOID(expression)                                                                      \
    do {                                                                                          \
        if (auto tryResult = (expression); !tryResult) return std::unexpected(tryResult.error()); \
    } while (false)
