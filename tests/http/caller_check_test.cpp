#include "http/caller_check.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

bool mayCall(std::string_view headers, std::string_view method = "GET") {
    return !refusalOfRequest(method,
                             std::string(method) + " / HTTP/1.1\r\n" + std::string(headers));
}

TEST(CallerCheck, LetsProgramsInAndWebPagesNot) {
    const struct {
        const char* headers;
        bool mayCall;
    } rows[] = {
        {"", true},
        {"Host: 127.0.0.1:7390\r\n", true},
        {"Host: localhost\r\n", true},
        {"HOST: LocalHost:80\r\n", true},
        {"Host: [::1]:7390\r\n", true},
        {"Host: localhost:\r\n", true},
        {"Host: evil.example\r\n", false},
        {"Host: evil.example:7390\r\n", false},
        {"Host:\r\n", false},
        {"Host: localhost.evil.example\r\n", false},
        {"Host: localhost.\r\n", false},
        {"Host: localhost:80.evil.example\r\n", false},
        {"Host: 127.0.0.1@evil.example\r\n", false},
        {"Host: 127.0.0.1:80:80\r\n", false},
        {"Host: 127.0.0.2\r\n", false},
        {"Host: 0.0.0.0:7390\r\n", false},
        {"Host: localhost, evil.example\r\n", false},
        {"Host: localhost\r\nHost: evil.example\r\n", false},
        {"Host: evil.example\r\nHost: localhost\r\n", false},
        {"Origin: http://localhost:3000\r\n", true},
        {"Origin: http://127.0.0.1\r\n", true},
        {"Origin: HTTP://[::1]:7390\r\n", true},
        {"Origin: https://localhost\r\n", false},
        {"Origin: http://evil.example\r\n", false},
        {"Origin: null\r\n", false},
        {"Origin:\r\n", false},
        {"Origin: localhost\r\n", false},
        {"Origin: http://localhost/\r\n", false},
        {"Origin: chrome-extension://abc\r\n", false},
        {"Host: localhost\r\nOrigin: http://evil.example\r\n", false},
        {"Sec-Fetch-Site: none\r\n", true},
        {"sec-fetch-site: Same-Origin\r\n", true},
        {"Sec-Fetch-Site: same-site\r\n", false},
        {"Sec-Fetch-Site: cross-site\r\n", false},
        {"Sec-Fetch-Site:\r\n", false},
        {"X-Origin: http://evil.example\r\n", true},
    };
    for (const auto& row : rows) EXPECT_EQ(mayCall(row.headers), row.mayCall) << row.headers;
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
    const struct {
        const char* name;
        Result<uid_t> user;
        uid_t own;
        bool mayCall;
    } rows[] = {
        {"same", 1000, 1000, true},     {"other", 1001, 1000, false},
        {"root calls", 0, 1000, false}, {"user calls root", 1000, 0, false},
        {"both root", 0, 0, true},      {"unknown", fail("no such socket"), 1000, false},
    };
    for (const auto& row : rows) {
        FakePeers peers(row.user, row.own);
        EXPECT_EQ(!refusalOfPeer(peers, {}), row.mayCall) << row.name;
    }
}

}  // namespace
}  // namespace tandrel
