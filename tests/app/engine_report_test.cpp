#include "app/engine_report.h"

#include <gtest/gtest.h>

#include "base/file.h"
#include "support/environment_variable.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

TEST(EngineReport, IsReadFromTheStatus) {
    const auto report = parseEngineReport(Json::parse(R"({
        "app": "Tandrel", "version": "1.2", "paused": true, "paymentGuard": true, "asking": 12.5,
        "bluetooth": "1 connected, advertising as Tandrel", "hosts": ["A", "B"],
        "unmatchedHosts": ["B"], "screenState": "locked", "screenStateAge": 2.5,
        "absent": ["Cable: none"],
        "bluetoothAdapters": [{"name": "hci0", "peripheral": true, "powered": true,
          "advertising": true, "phone": "Ada's", "paired": ["Ada's", 7], "refusedPhones": 2}, 5],
        "airplay": {"error": "no window", "receiver": {"state": "waiting", "name": "Tandrel"}},
        "devices": [
          {"id": "USB-1", "name": "Ada's", "bluetooth": true, "width": 1206, "height": 2622},
          {"id": "airplay-1", "name": "Mirror", "bluetooth": false}]})"));
    EXPECT_TRUE(report.up && report.paused && report.asksBeforePayments && report.asking);
    EXPECT_TRUE(report.bluetoothReady() && report.phoneConnected());
    EXPECT_EQ(report.hosts, (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(report.screenState, PhoneScreen::locked);
    EXPECT_EQ(report.screenStateAgeSeconds, 2.5);
    EXPECT_EQ(report.airplay.error, "no window");
    ASSERT_EQ(report.adapters.size(), 2U);
    EXPECT_EQ(report.adapters[0], (AdapterReport{"hci0", true, true, true, "Ada's", {"Ada's"}, 2}));
    EXPECT_EQ(report.airplay.receiver, "waiting");
    ASSERT_EQ(report.phones.size(), 2U);
    EXPECT_EQ(report.phones[0],
              (PhoneSeen{"USB-1", "Ada's", ScreenSource::usb, true, true, 1206, 2622}));
    EXPECT_TRUE(report.hasPicture(ScreenSource::usb));
    EXPECT_TRUE(report.sees(ScreenSource::airplay));
    EXPECT_FALSE(report.hasPicture(ScreenSource::airplay));
}

TEST(EngineReport, WhatMakesNoSenseCountsForNothing) {
    for (const char* text :
         {"{}", "[]", "7", "null", R"({"devices": 7, "hosts": {"a": 1}, "bluetooth": []})",
          R"({"devices": [7, null, [], {"width": 1e300, "height": -1, "id": 5}]})",
          R"({"airplay": [1], "screenState": "blue", "screenStateAge": "x", "absent": [1]})",
          R"({"airplay": {"receiver": 7}, "paused": "yes"})"}) {
        const auto report = parseEngineReport(Json::parse(text));
        EXPECT_FALSE(report.paused || report.bluetoothReady() || report.phoneConnected()) << text;
        EXPECT_FALSE(report.hasPicture(ScreenSource::usb)) << text;
        EXPECT_EQ(report.screenState, PhoneScreen::unknown) << text;
        EXPECT_EQ(report.up, std::string_view(text).find(':') != std::string_view::npos) << text;
    }
}

TEST(EngineReport, APhoneIsConnectedThroughItsHostOrWithoutAnyScreen) {
    const std::pair<const char*, bool> rows[] = {
        {R"({"hosts": ["A"], "devices": []})", true},
        {R"({"hosts": [], "devices": []})", false},
        {R"({"hosts": ["A"], "devices": [{"id": "1", "bluetooth": false}]})", false},
        {R"({"hosts": ["A"], "devices": [{"id": "1", "bluetooth": false},
                                         {"id": "2", "bluetooth": true}]})",
         true},
    };
    for (const auto& [text, connected] : rows) {
        EXPECT_EQ(parseEngineReport(Json::parse(text)).phoneConnected(), connected) << text;
    }
}

TEST(EngineReport, BluetoothIsReadyOnceItIsAdvertised) {
    for (const char* state : {"advertising as Tandrel", "1 connected, not advertising"}) {
        EXPECT_TRUE(parseEngineReport({{"bluetooth", state}}).bluetoothReady()) << state;
    }
    for (const char* state :
         {"starting", "bluetooth off", "advertising failed: busy", "failed to add 1812: no"}) {
        EXPECT_FALSE(parseEngineReport({{"bluetooth", state}}).bluetoothReady()) << state;
    }
}

TEST(FindEngine, TheVariablesComeBeforeTheRunningCopyAndThatBeforeTheUsualPorts) {
    TemporaryFolder folder;
    const auto file = folder.path() / "engine.json";
    const EnvironmentVariable url("TANDREL_ENGINE_URL", std::nullopt);
    const EnvironmentVariable airplay("TANDREL_AIRPLAY_URL", std::nullopt);
    const EnvironmentVariable airplayPort("TANDREL_AIRPLAY_PORT", std::nullopt);
    const EnvironmentVariable noPort("TANDREL_ENGINE_PORT", std::nullopt);
    EXPECT_EQ(findEngine(file)->engine.text(), "http://127.0.0.1:7390");
    for (const char* broken :
         {"{", "[]", R"({"port": 0})", R"({"port": 70000})", R"({"port": "9"})"}) {
        ASSERT_TRUE(replaceFile(file, broken));
        EXPECT_EQ(findEngine(file)->engine.text(), "http://127.0.0.1:7390") << broken;
    }
    ASSERT_TRUE(replaceFile(file, R"({"port": 4000, "airplayPort": 4001})"));
    EXPECT_EQ(findEngine(file)->engine.text(), "http://127.0.0.1:4000");
    EXPECT_EQ(findEngine(file)->airplay.text(), "http://127.0.0.1:4001");
    {
        const EnvironmentVariable port("TANDREL_ENGINE_PORT", "0");
        EXPECT_EQ(findEngine(file)->engine.text(), "http://127.0.0.1:4000") << "it chose that";
    }
    {
        const EnvironmentVariable port("TANDREL_ENGINE_PORT", "5000");
        EXPECT_EQ(findEngine(file)->engine.text(), "http://127.0.0.1:5000");
    }
    const EnvironmentVariable elsewhere("TANDREL_ENGINE_URL", "http://example.org:80");
    EXPECT_FALSE(findEngine(file));
}

}  // namespace
}  // namespace tandrel
