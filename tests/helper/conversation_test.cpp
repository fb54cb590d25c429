#include "helper/conversation.h"

#include <map>
#include <random>
#include <set>

#include "helper/app_side.h"
#include "helper/fake_engine.h"

namespace tandrel {
namespace {

// A conversation of random messages, whole and broken, and what must come back.
class RandomTalk {
 public:
    explicit RandomTalk(unsigned seed) : random_(seed) {
        const int count = number(1, 60);
        for (int i = 0; i < count; ++i) addLine(i);
    }

    // The bytes in pieces that begin and end anywhere.
    std::vector<std::string> pieces() {
        std::vector<std::string> pieces;
        for (std::size_t at = 0; at < text_.size();) {
            const auto size = static_cast<std::size_t>(number(1, number(1, 2) == 1 ? 7 : 3000));
            pieces.push_back(text_.substr(at, size));
            at += size;
        }
        return pieces;
    }

    std::multiset<std::string> requested;  // ids as JSON
    std::set<std::string> withdrawn;
    std::size_t broken = 0;  // lines that can only be answered under the id null

 private:
    int number(int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(random_);
    }

    void addLine(int i) {
        const Json id = number(0, 1) == 0 ? Json(i) : Json("id " + std::to_string(i));
        const Json requests[] = {
            request(id, "initialize", {{"protocolVersion", "2025-06-18"}}),
            request(id, "tools/list"),
            request(id, "no/such\nmethod"),
            callRequest(id, "no_such_tool"),
            callRequest(id, "iphone_tap", {{"x", "far"}, {"y", Json::array()}}),
            callRequest(id, "iphone_look"),
            request(id, "tools/call", {{"name", 5}, {"arguments", id}}),
            callRequest(id, "iphone_get_status")};
        const auto kind = static_cast<std::size_t>(number(0, 9));
        if (kind < std::size(requests)) return add(requests[kind]);
        kind == 8 ? addBroken(request(id, "ping").dump()) : addNotification(i);
    }

    void add(const Json& message) {
        requested.insert(message.at("id").dump());
        text_ += message.dump() + (number(0, 3) == 0 ? "\r\n" : "\n");
    }

    void addBroken(std::string line) {
        if (number(0, 1) == 0) {
            line.resize(static_cast<std::size_t>(number(1, static_cast<int>(line.size()) - 1)));
        } else {
            for (char& byte : line) byte = static_cast<char>(number(11, 255));
            line.insert(line.begin(), '}');
        }
        ++broken;
        text_ += line + "\n";
    }

    void addNotification(int i) {
        const Json id = number(0, std::max(i - 1, 0));
        withdrawn.insert(id.dump());
        text_ += cancelled(id).dump() + "\n\n";
    }

    std::mt19937 random_;
    std::string text_;
};

TEST(Conversation, EveryRequestIsAnsweredOnceWhateverStandsAroundIt) {
    FakeEngine engine;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomTalk talk(seed);
        AppSide app;
        std::map<std::string, std::size_t> answers;
        std::jthread sender([&] {
            for (const std::string& piece : talk.pieces()) app.sendText(piece);
            app.endInput();
        });
        for (const Json& message : app.receiveRest()) ++answers[message.at("id").dump()];
        EXPECT_EQ(answers["null"], talk.broken);
        answers.erase("null");
        for (const std::string& id : talk.requested) {
            const std::size_t count = answers[id];
            EXPECT_TRUE(count == 1 || (count == 0 && talk.withdrawn.contains(id)))
                << id << " was answered " << count << " times";
        }
        for (const auto& [id, count] : answers) EXPECT_TRUE(talk.requested.contains(id)) << id;
    }
}

}  // namespace
}  // namespace tandrel
