#include "engine/running_engine.h"

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

// Everything the wiring reads from the environment. Set before any thread of this engine starts.
void setEnvironment(const std::filesystem::path& home, const std::string& phones) {
    ::setenv("HOME", home.c_str(), 1);
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "TANDREL_APPROVALS_LOG",
          "TANDREL_ENGINE_URL", "TANDREL_AIRPLAY_URL"}) {
        ::unsetenv(name);
    }
    ::setenv("TANDREL_VIRTUAL_PHONE", phones.c_str(), 1);
    ::setenv("TANDREL_ENGINE_PORT", "0", 1);
    ::setenv("TANDREL_AIRPLAY_PORT", "0", 1);
    ::setenv("TANDREL_GUARD_TIMEOUT", std::to_string(kGuardTimeout).c_str(), 1);
}

}  // namespace

RunningEngine::RunningEngine(const std::string& phones, std::shared_ptr<TemporaryFolder> home,
                             Asker* owner, std::unique_ptr<TextRecognizer> recognizer)
    : home_(std::move(home)), nobody_(systemClock()) {
    setEnvironment(home_->path(), phones);
    const AppInfo info = AppInfo::load(TANDREL_SOURCE_DIR);
    auto backends = Backends::open(info, systemClock());
    if (!backends) throw std::runtime_error(backends.error().message);
    backends->recognizer = std::move(recognizer);
    wiring_ = std::make_unique<Wiring>(std::move(*backends), info, loop_, owner ? *owner : nobody_,
                                       systemClock());
    wiring_->engine().start();
    url_ = *LoopbackUrl::parse(wiring_->engine().ownURL());
    awaitPhones();
}

std::string RunningEngine::scenario(const std::string& file) {
    return std::string(TANDREL_SOURCE_DIR) + "/share/tandrel/scenarios/" + file;
}

ClientResponse RunningEngine::get(const std::string& target) {
    return httpGet(url_, target, {.timeout = std::chrono::seconds(60)}).value();
}

ClientResponse RunningEngine::post(const std::string& target, const Json& body) {
    return httpPost(url_, target, body, {.timeout = std::chrono::seconds(60)}).value();
}

std::string RunningEngine::errorOf(const ClientResponse& reply, int status) {
    const Json body = reply.json();
    if (reply.status == status && body.contains("error")) return body["error"].get<std::string>();
    return std::to_string(reply.status) + " " + toText(reply.body);
}

std::string RunningEngine::refusal(const std::string& target, const Json& body, int status) {
    return errorOf(post(target, body), status);
}

bool RunningEngine::awaitPage(const std::string& page, std::size_t index) {
    return phone(index).awaitRecord(
        [&](const VirtualPhoneRecord& record) { return record.page == page; });
}

VirtualPhone& RunningEngine::phone(std::size_t index) {
    return *wiring_->backends().virtualPhones->phones()[index];
}

bool RunningEngine::allPhones(bool (*fits)(const Json& device)) {
    const Json status = get("/status").json();
    const auto& phones = wiring_->backends().virtualPhones->phones();
    const auto cabled =
        std::ranges::count_if(phones, [](const auto& phone) { return phone->links().plugged; });
    // Without any cable there is the one mirrored picture.
    const auto seen = static_cast<std::size_t>(std::max<std::ptrdiff_t>(cabled, 1));
    return status["devices"].size() == seen && status["hosts"].size() == phones.size() &&
           std::ranges::all_of(status["devices"], fits);
}

// The engine tells of phones through its API alone, so that is what is asked until it does.
void RunningEngine::awaitPhones() {
    while (!allPhones([](const Json& device) { return device.contains("width"); })) {
        std::this_thread::yield();
    }
}

void RunningEngine::awaitMatched() {
    while (!allPhones([](const Json& device) { return device["bluetooth"].get<bool>(); })) {
        std::this_thread::yield();
    }
}

}  // namespace tandrel
