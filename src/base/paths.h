#pragma once

#include <filesystem>

namespace tandrel {

// Folders of the XDG Base Directory Specification. A variable that is unset, empty or not an
// absolute path counts as absent, and the default below HOME holds. Without HOME the user
// database's home folder is taken, without that the temporary folder, so none of these fails.
std::filesystem::path homeFolder();
std::filesystem::path configHome();  // XDG_CONFIG_HOME, else ~/.config
std::filesystem::path dataHome();    // XDG_DATA_HOME, else ~/.local/share
std::filesystem::path stateHome();   // XDG_STATE_HOME, else ~/.local/state

// Where this executable lies, links resolved.
std::filesystem::path executablePath();

}  // namespace tandrel
