#pragma once

#include <cstdio>
#include <filesystem>
#include <vector>

#include "payments/guard_cases.h"

namespace tandrel::PaymentGuard {

// Judges the cases of the files with both layers and prints what was right and wrong: by category,
// by language, by layer and by rule, where each rule's gain is the questions that only it asks
// rightly, and its cost those that only it asks wrongly; then the name of each mistake. 0, or 1
// when a file cannot be read.
int reportCases(const std::vector<std::filesystem::path>& files, CaseReader& reader,
                std::FILE* out = stdout);

}  // namespace tandrel::PaymentGuard
