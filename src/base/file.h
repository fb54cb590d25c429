#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

namespace tandrel {

// The system's words for an errno value.
std::string systemError(int code);

// The file's bytes. Fails when it cannot be read, is not a regular file, or holds more than
// `limit` bytes; the error says which.
Result<std::string> readFile(const std::filesystem::path& path, std::size_t limit);

// Whether a program lies there that this user may run.
bool isExecutableFile(const std::filesystem::path& path);

// Replaces the file as a whole: a temporary file beside it is written, synced and renamed over it,
// and the folder is synced, so that a crash leaves the old content or the new and never a part. An
// existing file keeps its mode and, where allowed, its owner; a symbolic link is followed. Missing
// folders are created.
Result<void> replaceFile(const std::filesystem::path& path, std::string_view content);

enum class Replacement { done, changedMeanwhile };

// The same for a file that others write, too: it is replaced only if it holds `expected` (nothing:
// if it does not exist) at the moment of the replacement. What another program put there meanwhile
// is left, or put back, and told by `changedMeanwhile`. Where the file system cannot exchange two
// files at once, the file is compared just before it is replaced.
Result<Replacement> replaceFileHolding(const std::filesystem::path& path,
                                       const std::optional<std::string>& expected,
                                       std::string_view content);

}  // namespace tandrel
