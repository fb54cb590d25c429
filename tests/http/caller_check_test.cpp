#include "http/caller_check.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

bool mayCall(std::string_view headers, std::string_view method = "GET") {
    return !refusalOfRequest(method,
                             std::string(method) + " / HTTP/1.1\r\n" + std::string(headers));
}

TEST(CallerCheck, LetsProgramsInAndWebPagesNot) {
    for (const char* headers :
         {"", "Host: 127.0.0.1:7390\r\n", "Host: localhost\r\n", "HOST: LocalHost:80\r\n",
          "Host: [::1]:7390\r\n", "Host: localhost:\r\n", "Origin: http://localhost:3000\r\n",
          "Origin: http://127.0.0.1\r\n", "Origin: HTTP://[::1]:7390\r\n",
          "Sec-Fetch-Site: none\r\n", "sec-fetch-site: Same-Origin\r\n",
          "X-Origin: http://evil.example\r\n"}) {
        EXPECT_TRUE(mayCall(headers)) << headers;
    }
    const std::pair<std::string, std::vector<std::string>> refused[] = {
        {"Host: ",
         {"evil.example", "evil.example:7390", "", "localhost.evil.example", "localhost.",
          "localhost:80.evil.example", "127.0.0.1@evil.example", "127.0.0.1:80:80", "127.0.0.2",
          "0.0.0.0:7390", "localhost:123456", "localhost, evil.example",
          "localhost\r\nHost: evil.example", "evil.example\r\nHost: localhost",
          "localhost\r\nOrigin: http://evil.example"}},
        {"Origin: ",
         {"https://localhost", "http://evil.example", "null", "", "localhost", "http://localhost/",
          "chrome-extension://abc"}},
        {"Sec-Fetch-Site: ", {"same-site", "cross-site", ""}},
    };
    for (const auto& [header, values] : refused) {
        for (const std::string& value : values) {
            EXPECT_FALSE(mayCall(header + value + "\r\n")) << header << value;
        }
    }
}

TEST(CallerCheck, RefusesOptions) {
    EXPECT_FALSE(mayCall("Host: localhost\r\n", "OPTIONS"));
    EXPECT_FALSE(mayCall("", "options"));
}

TEST(CallerCheck, NamesTheRemedy) {
    EXPECT_EQ(refusalOfRequest("GET", "GET / HTTP/1.1\r\nHost: evil.example\r\n"),
              "Refused: the request was sent to another host name. Call this port as 127.0.0.1 or "
              "localhost.");
    EXPECT_EQ(
        refusalOfRequest("GET", "GET / HTTP/1.1\r\nOrigin: null\r\n"),
        "Refused: a web page may not use this port. Call it from a program on this computer.");
}

class FakePeers final : public PeerIdentity {
 public:
    FakePeers(Result<uid_t> user, uid_t own) : user_(std::move(user)), own_(own) {}
    Result<uid_t> userBehind(const LoopbackConnection&) override { return user_; }
    uid_t ownUser() const override { return own_; }

 private:
    const Result<uid_t> user_;
    const uid_t own_;
};

TEST(CallerCheck, LetsInOnlyTheSameUser) {
    const std::tuple<const char*, Result<uid_t>, uid_t, bool> rows[] = {
        {"same", 1000, 1000, true},     {"other", 1001, 1000, false},
        {"root calls", 0, 1000, false}, {"user calls root", 1000, 0, false},
        {"both root", 0, 0, true},      {"unknown", fail("no such socket"), 1000, false},
    };
    for (const auto& [name, user, own, mayPass] : rows) {
        FakePeers peers(user, own);
        EXPECT_EQ(!refusalOfPeer(peers, {}), mayPass) << name;
    }
}

}  // namespace
}  // namespace tandrel
