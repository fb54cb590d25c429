#include <fmt/format.h>

#include "aiconnect/ai_connect.h"
#include "aiconnect/codex_toml.h"
#include "aiconnect/programs.h"

namespace tandrel {

bool AIConnect::codexInstalled() const {
    std::vector<std::filesystem::path> places;
    for (const auto& folder : places_.system) places.push_back(folder / "codex");
    for (const char* folder : {".local/bin", ".npm-global/bin", ".bun/bin"}) {
        places.push_back(places_.home / folder / "codex");
    }
    return firstExecutable(places) || to_.installed.find("com.openai.codex");
}

Link AIConnect::codexLink() const {
    const auto text = readSettings(codexSettings());
    return text && *text ? tandrel::codexLink(**text, helper_) : Link::notAdded;
}

std::string AIConnect::codexSnippet() const { return tandrel::codexSnippet(helper_); }

AIConnect::Outcome AIConnect::addToCodex() const {
    const auto edited = editSettings(
        {.file = codexSettings(),
         .merge = [&](const std::optional<std::string>& text) -> Result<std::string> {
             auto merged = mergeCodexSafely(text.value_or(""), helper_);
             if (merged) return merged;
             return fail(
                 "Codex's settings file lists its tools in a way Tandrel can't safely edit. Copy "
                 "the setup below and paste it at the end of " +
                 codexSettings().string());
         },
         .cannotBackUp = "Couldn't back up Codex's settings: ",
         .cannotWrite = "Couldn't write Codex's settings: "},
        to_.clock);
    if (!edited) return {false, edited.error().message};
    return {true, "Added" + savedAs(*edited) + ". Start a new Codex session to use it."};
}

}  // namespace tandrel
