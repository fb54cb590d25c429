#include "app/app_state.h"

#include <atomic>
#include <thread>

#include "aiconnect/ai_connect_fixture.h"
#include "app/ai_apps.h"
#include "http/server.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/linux_main_loop.h"

namespace tandrel {
namespace {

class FakeComputer final : public Permissions, public UsbRegistry {
 public:
    Permission bluetooth() override { return Permission::granted; }
    Permission camera() override { return Permission::denied; }
    Permission screenRecording() override { return Permission::granted; }
    std::vector<UsbDevice> devices() override {
        if (!plugged) return {};
        return {{.vendorId = 0x5ac, .productName = "iPhone"}};
    }
    std::atomic<bool> plugged = false;
};

class NoAttributes final : public ExtendedAttributes {
    std::optional<std::string> text(const std::filesystem::path&, std::string_view) override {
        return std::nullopt;
    }
};

AppInfo infoOf(const std::filesystem::path& bundle) {
    AppInfo info;
    info.bundle = bundle;
    return info;
}

const Json kHealthy = Json::parse(R"({
    "app": "Tandrel", "bluetooth": "1 connected, advertising as Tandrel", "hosts": ["A"],
    "screenState": "awake", "screenStateAge": 1,
    "devices": [{"id": "P", "name": "Phone", "bluetooth": true, "width": 12, "height": 26}]})");

// The model before an engine that says what the test lets it say, on this computer's main thread.
class AppStateTest : public AIConnectTest {
 protected:
    AppStateTest() {
        putProgram("Tandrel/bin/tandrel", "echo tandrel 1.0");
        EXPECT_TRUE(server_.start());
    }
    ~AppStateTest() override {
        hold_ = false;
        hold_.notify_all();
    }

    void say(Json status) {
        const MutexLock lock(mutex_);
        status_ = std::move(status);
    }
    void start() {
        state_->startPolling({EngineMode::Kind::own, ""}, LoopbackUrl::ofPort(server_.port()));
    }
    // Runs the main thread until the model shows it; throws when it does not come to that.
    void await(const std::function<bool(const AppSnapshot&)>& fits) {
        const auto main = std::this_thread::get_id();
        const auto listener = state_->listen([&](const AppSnapshot& now) {
            EXPECT_EQ(std::this_thread::get_id(), main);
            if (fits(now)) loop_.quit(0);
        });
        const auto patience = loop_.after(std::chrono::seconds(60), [&] { loop_.quit(1); });
        state_->refresh();
        if (loop_.run() != 0) throw std::runtime_error("the model never showed it");
    }

    HTTPResponse reply(const HTTPRequest& request) {
        if (request.path != "/status") return HTTPResponse::json({{"ocr", Json::array()}});
        ++polls_;
        polls_.notify_all();
        hold_.wait(true);
        const MutexLock lock(mutex_);
        return HTTPResponse::json(status_);
    }

    Mutex mutex_;
    Json status_ OWNED_BY(mutex_) = kHealthy;
    std::atomic<int> polls_ = 0;
    std::atomic<bool> hold_ = false;
    HTTPServer server_{0, [this](const HTTPRequest& request) { return reply(request); }};
    LinuxMainLoop loop_;
    FakeComputer computer_;
    NoAttributes attributes_;
    ManualClock time_;
    JsonUserDefaults defaults_{home() / "settings.json"};
    const AIConnect ai_ = connect();
    const HelperCheck helper_{infoOf(home() / "Tandrel"), {processes, defaults_, attributes_}};
    AppState::Options options_{.advertisedName = "Tandrel", .macName = "Desk"};
    AppState::Services services_{.defaults = defaults_,
                                 .permissions = computer_,
                                 .usb = computer_,
                                 .helper = helper_,
                                 .ai = ai_,
                                 .loop = loop_,
                                 .clock = time_};
    std::optional<AppState> state_{std::in_place, services_, options_};
};

TEST_F(AppStateTest, ShowsWhatTheEngineAndTheComputerSay) {
    EXPECT_FALSE(state_->snapshot().inputs.engineUp);
    start();
    await([](const AppSnapshot& now) {
        return now.isHealthy() && now.inputs.bluetoothPerm == Permission::granted;
    });
    const AppSnapshot now = state_->snapshot();
    EXPECT_EQ(now.inputs.screenSource, ScreenSource::usb);
    EXPECT_EQ(now.inputs.screenState, PhoneScreen::awake);
    EXPECT_TRUE(now.inputs.usbPhone && now.inputs.usbPlugged);
    EXPECT_EQ(now.cameraPerm, Permission::denied);
    EXPECT_EQ(now.helper.kind, HelperCheck::State::Kind::ready);
    EXPECT_EQ(now.phones.at(0).name, "Phone");

    say({{"app", "Tandrel"}, {"bluetooth", "bluetooth off"}, {"devices", Json::array()}});
    computer_.plugged = true;
    await([](const AppSnapshot& later) {
        return later.inputs.screenSource == ScreenSource::none && later.inputs.usbPlugged;
    });
    EXPECT_FALSE(state_->snapshot().inputs.bluetoothReady);
    server_.stop();
    await([](const AppSnapshot& later) { return !later.inputs.engineUp; });
}

TEST_F(AppStateTest, PollsAgainAndAgain) {
    start();
    while (polls_ < 4) {
        time_.advance(AppState::kPollInterval);
        std::this_thread::yield();
    }
}

TEST_F(AppStateTest, AnEngineThatHangsHoldsNobodyUp) {
    hold_ = true;
    start();
    polls_.wait(0);
    EXPECT_FALSE(state_->snapshot().inputs.engineUp);
    state_->refresh();
    state_->stop();
}

TEST_F(AppStateTest, AnAppsEntryThatComesOrGoesIsNoticedAndMissedUntilItIsLeftOutOnPurpose) {
    const auto codex = [](const AppSnapshot& now) { return now.aiApps.at(2); };
    const auto isLost = [](const AppSnapshot& now) { return now.aiApps.at(2).lost; };
    const auto program = putProgram(".local/bin/codex", "");
    start();
    await([&](const AppSnapshot& now) { return codex(now).installed; });
    EXPECT_EQ(codex(state_->snapshot()).link, Link::notAdded);
    EXPECT_EQ(codex(state_->snapshot()).toPaste + "\n", kEntry);
    EXPECT_FALSE(isLost(state_->snapshot())) << "it was never there";
    ASSERT_TRUE(ai_.addToCodex().ok);
    await([&](const AppSnapshot& now) { return codex(now).link == Link::addedHere; });
    put(codexFile(), "[mcp_servers.tandrel]\ncommand = \"/old\"\n");
    await([&](const AppSnapshot& now) { return codex(now).link == Link::addedElsewhere; });
    state_->stop();
    std::filesystem::remove(codexFile());

    state_.emplace(services_, options_);
    start();
    await([&](const AppSnapshot& now) { return isLost(now) && codex(now).link == Link::notAdded; });
    std::filesystem::rename(program, program.string() + ".gone");
    await(std::not_fn(isLost));
    std::filesystem::rename(program.string() + ".gone", program);
    await(isLost);
    ASSERT_TRUE(forgetEntry(AIApp::codex, defaults_));
    await(std::not_fn(isLost));
}

TEST_F(AppStateTest, AHelperThatFailsIsToldUntilItIsCheckedAgain) {
    putProgram("Tandrel/bin/tandrel", "echo broken; exit 1");
    start();
    await([](const AppSnapshot& now) { return now.helper.text == "broken"; });
    putProgram("Tandrel/bin/tandrel", "echo tandrel 1.0");
    state_->checkHelper();
    await(
        [](const AppSnapshot& now) { return now.helper.kind == HelperCheck::State::Kind::ready; });
}

TEST_F(AppStateTest, WhatTheOwnerChoosesAndWhatWorkedOnceIsKept) {
    ASSERT_TRUE(defaults_.set("link", "airplay"));
    ASSERT_TRUE(defaults_.set("paused", true));
    EXPECT_FALSE(state_->snapshot().phoneWasSetUp);
    start();
    await([](const AppSnapshot& now) { return now.phoneWasSetUp && now.inputs.paused; });
    EXPECT_TRUE(state_->snapshot().inputs.lastHealthyKnown);
    EXPECT_EQ(state_->snapshot().inputs.linkChoice, LinkChoice::airplay);
    ASSERT_TRUE(state_->setSetupDone(true));
    EXPECT_TRUE(state_->snapshot().inputs.setupDone);
    state_->stop();
    EXPECT_EQ(defaults_.boolValue("phoneWasSetUp"), true);
    EXPECT_EQ(defaults_.boolValue("setupDone"), true);
}

}  // namespace
}  // namespace tandrel
