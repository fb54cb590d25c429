#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "payments/guard_fixtures.h"

namespace tandrel::PaymentGuard {

// One line for each expectation of the fixture that the guard does not meet: the case, the member,
// what was expected and what came.
std::vector<std::string> differences(const Fixture& fixture);

// Runs the guard on every case of a fixture file; prints each difference and the count of cases
// passed and failed. 0 when there are cases and all pass; a file that cannot be read, is not of the
// layout or has no case is told in a line that begins "can't read".
int checkFixtures(const std::filesystem::path& path, std::FILE* out = stdout);

// The fixture files that come with the program, in order of name; `share` is its share/tandrel.
std::vector<std::filesystem::path> shippedFixtures(const std::filesystem::path& share);

}  // namespace tandrel::PaymentGuard
