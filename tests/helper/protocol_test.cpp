
#include "helper/app_side.h"

namespace tandrel {
namespace {

Json statelessMeta() {
    return {{"io.modelcontextprotocol/protocolVersion", "2026-07-28"},
            {"io.modelcontextprotocol/clientCapabilities", Json::object()}};
}

// What one line is answered with, before any handshake: what the answer must hold.
// clang-format off
constexpr std::tuple<const char*, const char*, const char*> kExchanges[] = {
    {"not JSON", R"({"jsonrpc")", R"({"id":null,"code":-32700})"},
    {"not UTF-8", "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}", R"({"id":null,"code":-32700})"},
    {"a number", "7", R"({"id":null,"code":-32600})"},
    {"no version", R"({"id":1,"method":"ping"})", R"({"id":1,"code":-32600,"says":"jsonrpc"})"},
    {"version 1", R"({"jsonrpc":"1.0","id":"a","method":"ping"})", R"({"id":"a","code":-32600})"},
    {"no method", R"({"jsonrpc":"2.0","id":1})", R"({"id":1,"code":-32600,"says":"method"})"},
    {"id null", R"({"jsonrpc":"2.0","id":null,"method":"ping"})", R"({"id":null,"code":-32600,"says":"id"})"},
    {"id fraction", R"({"jsonrpc":"2.0","id":1.5,"method":"ping"})", R"({"id":null,"code":-32600,"says":"id"})"},
    {"id zero", R"({"jsonrpc":"2.0","id":0,"method":"ping"})", R"({"id":0,"result":{}})"},
    {"id largest", R"({"jsonrpc":"2.0","id":9223372036854775807,"method":"ping"})", R"({"id":9223372036854775807,"result":{}})"},
    {"id empty text", R"({"jsonrpc":"2.0","id":"","method":"ping"})", R"({"id":"","result":{}})"},
    {"params is a list", R"({"jsonrpc":"2.0","id":1,"method":"ping","params":[]})", R"({"id":1,"code":-32602})"},
    {"params is null", R"({"jsonrpc":"2.0","id":1,"method":"ping","params":null})", R"({"id":1,"result":{}})"},

    {"unknown method before the handshake", R"({"jsonrpc":"2.0","id":"p","method":"resources/list"})", R"({"id":"p","code":-32601,"says":"resources/list"})"},
    {"ping is gone from the stateless version", R"({"jsonrpc":"2.0","id":1,"method":"ping","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28","io.modelcontextprotocol/clientCapabilities":{}}}})", R"({"id":1,"code":-32601})"},
    {"discover without metadata", R"({"jsonrpc":"2.0","id":1,"method":"server/discover"})", R"({"id":1,"code":-32601})"},
    {"metadata without a version", R"({"jsonrpc":"2.0","id":1,"method":"server/discover","params":{"_meta":{"io.modelcontextprotocol/clientCapabilities":{}}}})", R"({"id":1,"code":-32602,"says":"protocolVersion"})"},
    {"metadata without capabilities", R"({"jsonrpc":"2.0","id":1,"method":"tools/list","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28"}}})", R"({"id":1,"code":-32602,"says":"clientCapabilities"})"},
    {"version of the future", R"({"jsonrpc":"2.0","id":1,"method":"server/discover","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"2099-01-01","io.modelcontextprotocol/clientCapabilities":{}}}})", R"({"id":1,"code":-32022,"data":{"supported":["2026-07-28"],"requested":"2099-01-01"}})"},
    {"handshake's version without a handshake", R"({"jsonrpc":"2.0","id":1,"method":"tools/list","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"2025-11-25","io.modelcontextprotocol/clientCapabilities":{}}}})", R"({"id":1,"code":-32022,"data":{"supported":["2026-07-28"],"requested":"2025-11-25"}})"},

    {"discover", R"({"jsonrpc":"2.0","id":"probe","method":"server/discover","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28","io.modelcontextprotocol/clientCapabilities":{}}}})", R"({"id":"probe","result":{"resultType":"complete","supportedVersions":["2026-07-28"],"capabilities":{"tools":{"listChanged":false}},"ttlMs":300000,"cacheScope":"public","_meta":{"io.modelcontextprotocol/serverInfo":{"version":"1.2.3"}}}})"},
    {"handshake 2024", R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2024-11-05"}})", R"({"id":1,"result":{"protocolVersion":"2024-11-05","capabilities":{"tools":{"listChanged":false}},"serverInfo":{"name":"tandrel","version":"1.2.3"}}})"},
    {"handshake June 2025", R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2025-06-18"}})", R"({"id":1,"result":{"protocolVersion":"2025-06-18"}})"},
    {"handshake November 2025", R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2025-11-25"}})", R"({"id":1,"result":{"protocolVersion":"2025-11-25"}})"},
    {"handshake with the stateless version", R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2026-07-28"}})", R"({"id":1,"result":{"protocolVersion":"2025-11-25"}})"},
    {"handshake without a version", R"({"jsonrpc":"2.0","id":1,"method":"initialize"})", R"({"id":1,"code":-32602})"},

    {"unknown tool", R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":"rm"}})", R"({"id":1,"code":-32602,"says":"Unknown tool"})"},
    {"no tool", R"({"jsonrpc":"2.0","id":1,"method":"tools/call"})", R"({"id":1,"code":-32602})"},
    {"arguments is a list", R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":"iphone_tap","arguments":[1,2]}})", R"({"id":1,"code":-32602})"},
    {"a page that was never given", R"({"jsonrpc":"2.0","id":1,"method":"tools/list","params":{"cursor":"2"}})", R"({"id":1,"code":-32602})"},
    {"a batch before the handshake", R"([{"jsonrpc":"2.0","id":1,"method":"ping"}])", R"({"id":null,"code":-32600,"says":"2025-03-26"})"},
};
// clang-format on

TEST(Protocol, AnswersALineAsItsRowSays) {
    for (const auto& [name, line, answered] : kExchanges) {
        SCOPED_TRACE(name);
        AppSide app;
        app.sendText(std::string(line) + "\n");
        const Json answer = app.receive();
        const Json expected = Json::parse(answered);
        EXPECT_EQ(answer.at("jsonrpc"), "2.0");
        EXPECT_EQ(answer.at("id"), expected.at("id")) << answer;
        if (expected.contains("result")) {
            Json merged = answer.at("result");
            merged.merge_patch(expected["result"]);
            EXPECT_EQ(answer.at("result"), merged);
            continue;
        }
        const Json& error = answer.at("error");
        EXPECT_EQ(error.at("code"), expected["code"]) << answer;
        EXPECT_THAT(error.at("message").get<std::string>(),
                    testing::HasSubstr(expected.value("says", "")));
        EXPECT_EQ(error.value("data", Json()), expected.value("data", Json()));
    }
}

TEST(Protocol, NotificationsAndRepliesAreNotAnswered) {
    AppSide app;
    for (const char* line :
         {"", " \t\r", R"({"jsonrpc":"2.0","method":"notifications/initialized"})",
          R"({"jsonrpc":"2.0","method":"notifications/unheard-of","params":[]})",
          R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":9}})",
          R"({"jsonrpc":"2.0","method":"notifications/cancelled"})",
          R"({"jsonrpc":"2.0","method":"tools/call","params":{"name":"iphone_go_home"}})",
          R"({"jsonrpc":"2.0","id":3,"result":{}})",
          R"({"jsonrpc":"2.0","id":3,"error":{"code":1,"message":"no"}})"}) {
        app.sendText(std::string(line) + "\n");
    }
    app.send(request(4, "ping"));
    EXPECT_EQ(app.receive(), Json::parse(R"({"jsonrpc":"2.0","id":4,"result":{}})"));
    app.endInput();
    EXPECT_THAT(app.receiveRest(), testing::IsEmpty());
}

TEST(Protocol, AnOverlongLineIsRefusedAndTheNextOneServed) {
    AppSide app;
    app.sendText(R"({"jsonrpc":"2.0","id":1,"method":")" + std::string(5 << 20, 'x') + "\"}\n");
    app.send(request(2, "ping"));
    EXPECT_EQ(app.receive().at("error").at("code"), -32600);
    EXPECT_EQ(app.receive().at("id"), 2);
}

TEST(Protocol, ListsDifferOnlyInWhatTheStatelessVersionAdds) {
    AppSide app;
    app.send(request(1, "tools/list"));
    app.send(request(2, "tools/list", {{"_meta", statelessMeta()}}));
    const Json old = app.receive().at("result");
    Json stateless = app.receive().at("result");
    stateless.erase("_meta");
    EXPECT_EQ(old.size(), 1U);
    EXPECT_EQ(stateless, Json({{"tools", old.at("tools")},
                               {"resultType", "complete"},
                               {"ttlMs", 300000},
                               {"cacheScope", "public"}}));
}

TEST(Protocol, BothGenerationsAreServedSideBySide) {
    AppSide app;
    app.send(request(1, "initialize", {{"protocolVersion", "2025-06-18"}}));
    app.receive();
    app.send(request(2, "tools/call", {{"name", "iphone_tap"}, {"_meta", statelessMeta()}}));
    EXPECT_EQ(app.receive().at("result").at("resultType"), "complete");
    app.send(request(3, "tools/call", {{"name", "iphone_tap"}}));
    EXPECT_FALSE(app.receive().at("result").contains("resultType"));
}

TEST(Protocol, ABatchIsAnsweredInOneArray) {
    AppSide app;
    app.send(request(1, "initialize", {{"protocolVersion", "2025-03-26"}}));
    app.receive();
    app.send(Json::array({request(2, "ping"), Json({{"jsonrpc", "2.0"}, {"method", "x"}}), 5,
                          callRequest(3, "iphone_tap"), request(4, "nope")}));
    std::vector<Json> ids;
    for (const Json& reply : app.receive()) ids.push_back(reply.at("id"));
    EXPECT_THAT(ids, testing::UnorderedElementsAre(2, Json(nullptr), 3, 4));
    app.sendText("[]\n");
    EXPECT_EQ(app.receive().at("error").at("code"), -32600);
    app.send(Json::array({{{"jsonrpc", "2.0"}, {"method", "x"}}}));
    app.send(Json(std::vector<Json>(65, request(5, "ping"))));
    EXPECT_EQ(app.receive().at("error").at("code"), -32600);
}

}  // namespace
}  // namespace tandrel
