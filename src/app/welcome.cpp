#include "app/welcome.h"

#include <cstdio>

#include <fmt/format.h>

#include "app/wiring.h"
#include "platform/virtual/virtual_platform.h"

namespace tandrel {
namespace {

// What a person can try on the default virtual phone, in this order.
constexpr const char* kThingsToTry = R"(Try, in another terminal:
  curl -s '{0}/look?maxEdge=900' | python3 -c 'import json,sys; print(*json.load(sys.stdin)["ocr"], sep="\n")'
  curl -s -X POST {0}/tap -d '{{"x":{1},"y":{2},"fraction":true}}'      # tap Settings
  curl -s -X POST {0}/key -d '{{"key":"space","modifiers":["cmd"]}}'  # open the phone's search
  curl -s -X POST {0}/type -d '{{"text":"Notes"}}'                   # type into it
  curl -s -X POST {0}/home                                         # go Home
  curl -s -o phone.png '{0}/screenshot?maxEdge=900'                # save a picture
)";

// The middle of the Settings icon on the default scenario's home screen.
constexpr double kSettingsX = 0.616;
constexpr double kSettingsY = 0.243;

std::string phoneNames(const VirtualPlatform& platform) {
    std::string names;
    for (const auto& phone : platform.phones()) {
        names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", phone->traits().name);
    }
    return names;
}

std::string modeLine(const Engine& engine) {
    switch (engine.mode().kind) {
        case EngineMode::Kind::own:
            return fmt::format("The API listens on {}, the AirPlay pictures on {}.",
                               engine.ownURL(), engine.ownAirplayURL());
        case EngineMode::Kind::external:
            return fmt::format("{} already serves port {}; this copy uses it.",
                               engine.mode().detail, engine.settings().port);
        case EngineMode::Kind::failed:
        case EngineMode::Kind::stopped:
            return fmt::format("The API is not served: {}.", engine.mode().detail);
    }
    return {};
}

}  // namespace

void sayWelcome(Wiring& wiring, const AppInfo& info) {
    const Engine& engine = wiring.engine();
    fmt::print("\nTandrel {}. {}\n", info.version, modeLine(engine));
    const auto& phones = wiring.backends().virtualPhones;
    if (phones) fmt::print("The virtual iPhone is called {}.\n", phoneNames(*phones));
    if (const auto& absences = wiring.backends().absences) {
        for (const std::string& absence : absences()) fmt::print("{}.\n", absence);
    }
    if (phones && engine.mode().kind == EngineMode::Kind::own) {
        fmt::print(fmt::runtime(kThingsToTry), engine.ownURL(), kSettingsX, kSettingsY);
    }
    fmt::print("Ctrl-C ends it.\n\n");
    std::fflush(stdout);
}

}  // namespace tandrel
