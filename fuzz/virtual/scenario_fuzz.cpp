#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/virtual/phone_model.h"

// Fontconfig points to parts of its patterns by their distance, which the leak checker cannot
// follow.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

// A scenario that is read must also be one that can be shown, page by page.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tandrel;
    constexpr std::size_t kMostShown = 8;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto scenario = parseScenario(text, "fuzz.json");
    if (!scenario) return 0;
    static Fonts fonts;
    PhoneModel model(*scenario, fonts);
    for (std::size_t i = 0; i < scenario->pages.size() && i < kMostShown; ++i) {
        model.showPage(scenario->pages[i].name);
        model.look();
        model.touch(TouchPhase::down, {0.5, 0.5}, {});
        model.touch(TouchPhase::up, {0.5, 0.5}, {});
    }
    return 0;
}
