#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/virtual/json_place.h"
#include "platform/virtual/scenario.h"

// The parts of a scenario's pages, read from their JSON.
namespace tandrel {

using PageNames = std::set<std::string, std::less<>>;

inline constexpr double kLongestWait = 3600;  // seconds

Result<std::string> readPageName(const JsonPlace& from, const PageNames& names);
Result<Action> readAction(const JsonPlace& from, const PageNames& names);
Result<std::vector<Item>> readItems(const JsonPlace& from, const PageNames& names);

}  // namespace tandrel
