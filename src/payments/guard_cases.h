#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/result.h"
#include "payments/written_screen.h"

// Screens of which is known whether the guard must ask about an action on them.
namespace tandrel::PaymentGuard {

struct GuardCase {
    std::string name;
    std::string category;
    std::string language;
    bool asks = false;  // what is right
    JudgedScreen screen;
};

// Makes pictures of cases and reads them; whoever has a phone to draw with and a recogniser.
class CaseReader {
 public:
    virtual ~CaseReader() = default;
    // Draws the screen and reads the picture.
    virtual Result<JudgedScreen> draw(const WrittenScreen& screen, const WrittenAction& action) = 0;
    // Reads a picture; the action's points are fractions of it.
    virtual Result<JudgedScreen> read(const std::filesystem::path& picture,
                                      const Action& action) = 0;
};

struct GuardCases {
    std::vector<GuardCase> cases;
    std::size_t drawn = 0;    // of them
    std::size_t unknown = 0;  // left out for not saying what is right
};

// Reads {"cases":[...]}. A case is one of
//   {"name", "category", "language", "asks", "screen": [rows], "action": "tap [Pay]", "drawn"}
//   {"name", "category", "language", "asks", "picture": "a.png", "action": {"kind", "x", "y"}}
// or a recorded one as `parseFixtures` reads it, whose verdict says whether it asks unless "asks"
// does. The path of a picture counts from the file's folder. The error names the case.
Result<GuardCases> readCases(const std::filesystem::path& file, CaseReader& reader);

}  // namespace tandrel::PaymentGuard
