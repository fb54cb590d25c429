#include "engine/engine_settings.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(EngineSettings, PortsAreReadStrictly) {
    struct Row {
        std::optional<std::string> text;
        int port;
    };
    for (const Row& row :
         {Row{std::nullopt, 7390}, Row{"", 7390}, Row{"8000", 8000}, Row{"+8000", 8000},
          Row{"0", 0}, Row{"-0", 0}, Row{"-000", 0}, Row{"65535", 65535}, Row{"65536", 7390},
          Row{"70000", 7390}, Row{"-1", 7390}, Row{"abc", 7390}, Row{"80x", 7390}, Row{" 80", 7390},
          Row{"+", 7390}, Row{"-", 7390}, Row{"++80", 7390}, Row{"0x50", 7390}}) {
        EXPECT_EQ(parsePort(row.text, 7390), row.port) << row.text.value_or("(unset)");
    }
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
