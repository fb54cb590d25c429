#pragma once

#include <filesystem>

namespace tandrel {

// Has the windows speak the owner's language where share/tandrel/translations has a catalogue for
// it, else English. Needs the application object; main thread.
void installTranslations(const std::filesystem::path& share);

}  // namespace tandrel
