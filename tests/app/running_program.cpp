#include "app/running_program.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

namespace tandrel {
namespace {

std::vector<std::string> commandLine(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {RunningProgram::kPath};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

}  // namespace

const std::string RunningProgram::kPath = TANDREL_BIN_DIR "/tandrel-app";

ChildProgram::Environment plainEnvironment(const std::filesystem::path& home,
                                           const ChildProgram::Environment& more) {
    ChildProgram::Environment environment = {{"HOME", home.string()},
                                             {"LANG", "C.UTF-8"},
                                             // This computer's own Bluetooth is left alone.
                                             {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/none"},
                                             {"TANDREL_ENGINE_PORT", "0"},
                                             {"TANDREL_AIRPLAY_PORT", "0"}};
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name)) environment[name] = value;
    }
    for (const auto& [name, value] : more) environment[name] = value;
    std::erase_if(environment, [](const auto& variable) { return variable.second.empty(); });
    return environment;
}

ProgramResult runApp(const std::vector<std::string>& arguments, const std::filesystem::path& home,
                     const ChildProgram::Environment& more) {
    return runProgramToEnd(commandLine(arguments), plainEnvironment(home, more));
}

AppInfo builtApp() {
    AppInfo info = AppInfo::load(TANDREL_SOURCE_DIR);
    info.bundle = std::filesystem::path(TANDREL_BIN_DIR).parent_path();
    return info;
}

RunningProgram::RunningProgram(const ChildProgram::Environment& more,
                               const std::vector<std::string>& arguments,
                               std::shared_ptr<TemporaryFolder> home)
    : home_(std::move(home)),
      process_(commandLine(arguments), plainEnvironment(home_->path(), more)) {
    if (!process_.awaitOutput("Ctrl-C ends it.")) throw std::runtime_error(process_.output());
    constexpr std::string_view kBefore = "The API listens on ";
    const std::string& said = process_.output();
    const auto start = said.find(kBefore);
    if (start == std::string::npos) return;
    const auto url = said.substr(start + kBefore.size());
    url_ = LoopbackUrl::parse(url.substr(0, url.find(','))).value();
}

ClientResponse RunningProgram::get(const std::string& target) const {
    return httpGet(url_, target, {.timeout = std::chrono::seconds(60)}).value();
}

ClientResponse RunningProgram::post(const std::string& target, const Json& body) const {
    return httpPost(url_, target, body, {.timeout = std::chrono::seconds(60)}).value();
}

void RunningProgram::awaitReply(const std::string& target, const Fits& fits) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (Json reply; !fits(reply = get(target).json()); std::this_thread::yield()) {
        if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error(reply.dump());
    }
}

void RunningProgram::awaitStatus(const Fits& fits) const { awaitReply("/status", fits); }

void RunningProgram::awaitMatched() const {
    awaitStatus([](const Json& status) {
        const Json devices = status["devices"];
        return !devices.empty() && devices[0]["bluetooth"].get<bool>();
    });
}

void RunningProgram::awaitPicture() const {
    awaitStatus([](const Json& status) {
        const Json devices = status["devices"];
        return !devices.empty() && devices[0].contains("width");
    });
}

void RunningProgram::awaitText(const std::string& text) const {
    awaitReply("/look?maxEdge=32", [&](const Json& look) {
        return std::ranges::count(look.value("ocr", Json::array()), Json(text)) > 0;
    });
}

}  // namespace tandrel
