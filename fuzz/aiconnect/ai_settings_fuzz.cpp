#include <cstdint>
#include <cstdlib>

#include "aiconnect/claude_settings.h"
#include "aiconnect/codex_toml.h"
#include "aiconnect/toml_reading.h"

// Other apps' settings files with any bytes in them. Whatever is edited must name this copy
// afterwards, and a second edit must change nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tandrel;
    constexpr std::string_view kHelper = "/opt/a \"b\"\\c/tandrel";
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    codexLink(text, kHelper);
    if (const auto merged = mergeCodexSafely(text, kHelper)) {
        if (codexLink(*merged, kHelper) != Link::addedHere) std::abort();
        if (mergeCodexSafely(*merged, kHelper) != *merged) std::abort();
        if (tomlServerCommand(*merged) != kHelper) std::abort();
    }

    claudeLink(text, kHelper);
    if (const auto merged = mergeClaude(text, kHelper)) {
        if (claudeLink(*merged, kHelper) != Link::addedHere) std::abort();
        if (mergeClaude(*merged, kHelper) != *merged) std::abort();
    }
    return 0;
}
