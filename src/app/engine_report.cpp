#include "app/engine_report.h"

#include <algorithm>
#include <cmath>

#include "base/file.h"
#include "engine/engine_settings.h"
#include "http/client.h"

namespace tandrel {
namespace {

constexpr std::size_t kLargestStateFile = 64 * 1024;
// A status without pictures; more than this is not one of ours.
constexpr std::size_t kLargestStatus = 1024 * 1024;

std::vector<std::string> textList(const Json& object, const char* key) {
    std::vector<std::string> texts;
    const auto list = object.find(key);
    if (list == object.end() || !list->is_array()) return texts;
    for (const Json& item : *list) {
        if (item.is_string()) texts.push_back(item.get<std::string>());
    }
    return texts;
}

int pixels(const Json& object, const char* key) {
    constexpr double kMost = 100'000;
    const double value = numberMember(object, key).value_or(0);
    return value >= 1 && value <= kMost ? static_cast<int>(value) : 0;
}

std::vector<PhoneSeen> phonesOf(const Json& status) {
    std::vector<PhoneSeen> phones;
    const auto list = status.find("devices");
    if (list == status.end() || !list->is_array()) return phones;
    for (const Json& item : *list) {
        PhoneSeen phone{.id = textMember(item, "id").value_or(""),
                        .name = textMember(item, "name").value_or("iPhone"),
                        .bluetooth = boolMember(item, "bluetooth").value_or(false),
                        .width = pixels(item, "width"),
                        .height = pixels(item, "height")};
        // Each mirrored picture has an id of its own that begins like this.
        if (phone.id.starts_with("airplay-")) phone.source = ScreenSource::airplay;
        phone.picture = phone.width > 0 && phone.height > 0;
        phones.push_back(std::move(phone));
    }
    return phones;
}

std::vector<AdapterReport> adaptersOf(const Json& status) {
    constexpr double kMostRefused = 1'000'000;
    std::vector<AdapterReport> adapters;
    const auto list = status.find("bluetoothAdapters");
    if (list == status.end() || !list->is_array()) return adapters;
    for (const Json& item : *list) {
        const double refused = numberMember(item, "refusedPhones").value_or(0);
        adapters.push_back(
            {.name = textMember(item, "name").value_or(""),
             .peripheral = boolMember(item, "peripheral").value_or(false),
             .powered = boolMember(item, "powered").value_or(false),
             .advertising = boolMember(item, "advertising").value_or(false),
             .phone = textMember(item, "phone").value_or(""),
             .paired = textList(item, "paired"),
             .refusedPhones = static_cast<int>(std::clamp(refused, 0.0, kMostRefused))});
    }
    return adapters;
}

AirPlayReport airplayOf(const Json& status) {
    const auto member = status.find("airplay");
    if (member == status.end() || !member->is_object()) return {};
    const Json receiver = member->value("receiver", Json::object());
    return {.window = textMember(*member, "window").value_or(""),
            .receiver = textMember(receiver, "state").value_or(""),
            .receiverName = textMember(receiver, "name").value_or(""),
            .error = textMember(*member, "error").value_or("")};
}

PhoneScreen screenOf(const Json& status) {
    const std::string word = textMember(status, "screenState").value_or("");
    for (const auto state : {PhoneScreen::off, PhoneScreen::locked, PhoneScreen::awake}) {
        if (word == name(state)) return state;
    }
    return PhoneScreen::unknown;
}

// The ports that the running copy wrote down for others.
void takePorts(const std::filesystem::path& stateFile, EngineSettings& settings) {
    const auto text = readFile(stateFile, kLargestStateFile);
    const auto state = text ? parseJson(*text) : fail("");
    if (!state) return;
    const auto take = [&](const char* key, std::uint16_t& port) {
        const double value = numberMember(*state, key).value_or(0);
        if (value >= 1 && value <= 65535) port = static_cast<std::uint16_t>(value);
    };
    take("port", settings.port);
    take("airplayPort", settings.airplayPort);
}

}  // namespace

bool EngineReport::bluetoothReady() const {
    return bluetooth.starts_with("advertising as ") ||
           bluetooth.find(" connected, ") != std::string::npos;
}

bool EngineReport::sees(ScreenSource source) const {
    return std::ranges::count(phones, source, &PhoneSeen::source) > 0;
}

bool EngineReport::hasPicture(ScreenSource source) const {
    return std::ranges::any_of(phones, [source](const PhoneSeen& phone) {
        return phone.source == source && phone.picture;
    });
}

bool EngineReport::phoneConnected() const {
    if (phones.empty()) return !hosts.empty();
    return std::ranges::any_of(phones, &PhoneSeen::bluetooth);
}

Result<EnginePlace> findEngine(const std::filesystem::path& stateFile) {
    const EngineSettings set = EngineSettings::fromEnvironment();
    EngineSettings settings;
    takePorts(stateFile, settings);
    settings.engineURL = set.engineURL;
    settings.airplayURL = set.airplayURL;
    // Port 0 lets the running copy choose.
    const EngineSettings usual;
    if (set.port != usual.port && set.port != 0) settings.port = set.port;
    if (set.airplayPort != usual.airplayPort && set.airplayPort != 0) {
        settings.airplayPort = set.airplayPort;
    }
    return EnginePlace {
        TRY(LoopbackUrl::parse(settings.baseURL()))
        , TRY(LoopbackUrl::parse(settings.baseAirplayURL()))
    };
}

EngineReport parseEngineReport(const Json& status) {
    if (!status.is_object() || status.empty()) return {};
    return {.up = true,
            .app = textMember(status, "app").value_or(""),
            .version = textMember(status, "version").value_or(""),
            .paused = boolMember(status, "paused").value_or(false),
            .asksBeforePayments = boolMember(status, "paymentGuard").value_or(false),
            .asking = status.contains("asking"),
            .bluetooth = textMember(status, "bluetooth").value_or(""),
            .adapters = adaptersOf(status),
            .phones = phonesOf(status),
            .hosts = textList(status, "hosts"),
            .unmatchedHosts = textList(status, "unmatchedHosts"),
            .screenState = screenOf(status),
            .screenStateAgeSeconds = numberMember(status, "screenStateAge"),
            .airplay = airplayOf(status),
            .absences = textList(status, "absent")};
}

EngineReport askEngine(const LoopbackUrl& engine, Duration patience, std::stop_token stop) {
    const auto reply =
        httpGet(engine, "/status",
                {.timeout = patience, .stop = std::move(stop), .mostBytes = kLargestStatus});
    if (!reply || reply->status != 200) return {};
    return parseEngineReport(reply->json());
}

}  // namespace tandrel
