#include "engine/engine_settings.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(EngineSettings, PortsAreReadStrictly) {
    const std::pair<const char*, int> rows[] = {
        {"", 7390},     {"8000", 8000},   {"+8000", 8000}, {"0", 0},        {"-0", 0},
        {"-000", 0},    {"65535", 65535}, {"65536", 7390}, {"70000", 7390}, {"-1", 7390},
        {"abc", 7390},  {"80x", 7390},    {" 80", 7390},   {"+", 7390},     {"-", 7390},
        {"++80", 7390}, {"0x50", 7390},
    };
    for (const auto& [text, port] : rows) EXPECT_EQ(parsePort(text, 7390), port) << text;
    EXPECT_EQ(parsePort(std::nullopt, 7390), 7390);
}

TEST(EngineSettings, AnotherAddressReplacesThePort) {
    EngineSettings settings;
    settings.port = 8000;
    EXPECT_EQ(settings.baseURL(), "http://127.0.0.1:8000");
    EXPECT_EQ(settings.baseAirplayURL(), "http://127.0.0.1:7391");
    settings.engineURL = "http://localhost:9";
    EXPECT_EQ(settings.baseURL(), "http://localhost:9");
}

}  // namespace
}  // namespace tandrel
