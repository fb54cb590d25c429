#include <future>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "base/file.h"
#include "engine/running_engine.h"
#include "payments/approvals.h"
#include "support/eventually.h"

namespace tandrel {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto kApprove = ApprovalAnswer::approve;
constexpr auto kDeny = ApprovalAnswer::deny;
// Is a no, too, but unlike a denial not held against the same action later.
constexpr auto kNoAnswer = ApprovalAnswer::timeout;

// An owner who answers every question as the test says and remembers what was asked.
class ScriptedOwner final : public Asker {
 public:
    // Gets the question's number, from 0.
    using Reaction = std::function<ApprovalAnswer(std::size_t number, TimePoint deadline,
                                                  const std::stop_token& withdrawn)>;

    ScriptedOwner() { always(ApprovalAnswer::deny); }

    void always(ApprovalAnswer answer) {
        react = [answer](std::size_t, TimePoint, const std::stop_token&) { return answer; };
    }

    ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                       std::stop_token withdrawn) override {
        std::size_t number = 0;
        {
            MutexLock lock(mutex_);
            number = asked_.size();
            asked_.push_back(request);
        }
        if (++open_ > 1) overlapped = true;
        const ApprovalAnswer answer = react(number, deadline, withdrawn);
        --open_;
        return answer;
    }

    std::vector<ApprovalRequest> asked() const {
        MutexLock lock(mutex_);
        return asked_;
    }

    Reaction react;                        // set while nobody asks
    std::atomic<bool> overlapped = false;  // two questions were open at once

 private:
    std::atomic<int> open_ = 0;
    mutable Mutex mutex_;
    std::vector<ApprovalRequest> asked_ OWNED_BY(mutex_);
};

// The owner, the whole engine with real text recognition, and a phone whose record alone tells what
// was done.
class Guard : public testing::Test {
 protected:
    explicit Guard(const std::string& phones = RunningEngine::kDefaultPhone)
        : engine(phones, std::make_shared<TemporaryFolder>(), &owner) {
        engine.awaitMatched();
    }

    // Shows the page and starts to count from here.
    void show(const std::string& page) {
        phone().showPage(page);
        before = phone().record();
    }
    VirtualPhone& phone() { return engine.phone(); }
    // Where the phone shows something with this label, or else where that text is read.
    Json at(const std::string& label) {
        const auto place = phone().find(label);
        if (place) return {{"x", place->x}, {"y", place->y}, {"fraction", true}};
        awaitText(label);
        const Json look = engine.get("/look").json();
        for (const Json& line : look["lines"]) {
            if (line["text"] != label) continue;
            return {{"x", line["x"].get<double>() + line["w"].get<double>() / 2},
                    {"y", line["y"].get<double>() + line["h"].get<double>() / 2}};
        }
        throw std::runtime_error("nowhere: " + label);
    }
    ClientResponse tap(const std::string& label) { return engine.post("/tap", at(label)); }
    void awaitText(const std::string& text) {
        ASSERT_TRUE(eventually([&] {
            const Json seen = engine.get("/look?maxEdge=100").json()["ocr"];
            return std::ranges::count(seen, Json(text)) > 0;
        })) << text;
    }
    std::size_t touches() { return phone().record().touches.size() - before.touches.size(); }
    std::size_t keys() { return phone().record().keys.size() - before.keys.size(); }
    int count(const std::string& name) {
        return phone().record().counts[name] - before.counts[name];
    }
    // The log is written behind the reply.
    void expectLogged(const std::vector<std::string>& events) {
        std::vector<std::string> logged;
        eventually([&] {
            logged.clear();
            const auto log = readApprovals(engine.wiring().files().approvals, 100);
            for (const auto& record : log.value().newest) logged.push_back(record.event);
            return logged.size() >= events.size();
        });
        EXPECT_EQ(logged, events);
    }

    ScriptedOwner owner;
    RunningEngine engine;
    VirtualPhoneRecord before;
};

TEST_F(Guard, APriceButtonAsksAndAnApprovalTapsOnce) {
    owner.always(kApprove);
    show("tote");
    const Json place = at("€12.50");
    EXPECT_EQ(tap("€12.50").json(), Json({{"ok", true}, {"device", "VIRTUAL-0001"}}));
    ASSERT_THAT(owner.asked(), SizeIs(1));
    const ApprovalRequest asked = owner.asked()[0];
    EXPECT_EQ(asked.title, "Approve a payment of €12.50?");
    EXPECT_EQ(asked.what, "tap “€12.50”");
    EXPECT_EQ(asked.summary, "€12.50");
    EXPECT_EQ(asked.why, "a price button (\"€12.50\")");
    EXPECT_EQ(asked.picture.width(), 1206);
    EXPECT_EQ(asked.picture.height(), 2622);
    EXPECT_EQ(asked.place, (PlaceOnScreen{place["x"], place["y"]}));
    EXPECT_EQ(touches(), 1U);
    EXPECT_EQ(count("priceTaps"), 1);
    EXPECT_EQ(phone().record().touches.back().hit, "€12.50");
    expectLogged({"asked", "approved"});
}

TEST_F(Guard, ANoIsANo) {
    const std::string shown =
        "(tap “Confirm”: €25.00 to Ilse Varga (also on screen: DE89 3704 0044 0532 0130 00))";
    show("transfer");
    owner.react = [](std::size_t, TimePoint deadline, const std::stop_token&) {
        std::this_thread::sleep_until(deadline);
        return kNoAnswer;
    };
    EXPECT_EQ(
        RunningEngine::errorOf(tap("Confirm"), 403),
        fmt::format("Not done: the owner didn't answer the payment request on their Mac within {} "
                    "seconds {}, so it counts as a no. Repeat the action only if the owner asks "
                    "you to.",
                    kGuardTimeout, shown));
    EXPECT_EQ(owner.asked()[0].title, "Approve €25.00 to Ilse Varga?");
    owner.always(kDeny);
    const std::string denial =
        "The owner denied this on their Mac " + shown + ". Don't retry this payment.";
    EXPECT_EQ(RunningEngine::errorOf(tap("Confirm"), 403), denial);
    // The same once more: the same answer, and the owner is left in peace.
    EXPECT_EQ(RunningEngine::errorOf(tap("Confirm"), 403), denial);
    EXPECT_THAT(owner.asked(), SizeIs(2));
    EXPECT_EQ(touches(), 0U);
    expectLogged({"asked", "timed out", "asked", "denied", "refused"});
}

TEST_F(Guard, AScreenThatChangesAfterTheApprovalIsAskedAboutAgain) {
    show("tote");
    owner.react = [&](std::size_t number, TimePoint, const std::stop_token&) {
        if (number > 0) return kDeny;
        phone().showPage("checkout");
        return kApprove;
    };
    EXPECT_EQ(tap("€12.50").status, 403);
    ASSERT_THAT(owner.asked(), SizeIs(2));
    EXPECT_THAT(owner.asked()[1].summary, HasSubstr("€52.90"));
    EXPECT_EQ(touches(), 0U);
    expectLogged({"asked", "voided", "asked", "denied"});
}

TEST_F(Guard, APhoneInTroubleAfterTheApprovalGetsNothing) {
    using Verb = void (VirtualPhone::*)();
    constexpr const char* kChanged = "Not done: the iPhone or its connection changed";
    const std::tuple<const char*, Verb, Verb, int, const char*> rows[] = {
        {"unplugged", &VirtualPhone::unplug, &VirtualPhone::plug, 409, kChanged},
        {"keyboard link lost", &VirtualPhone::disconnectBluetooth, &VirtualPhone::connectBluetooth,
         409, kChanged},
        {"carried off", &VirtualPhone::vanish, &VirtualPhone::comeBack, 409, kChanged},
        {"black", &VirtualPhone::goBlack, &VirtualPhone::lightUp, 403, "no amount shown"},
        {"asleep", &VirtualPhone::sleep, &VirtualPhone::wake, 403, "no amount shown"},
        {"locked", &VirtualPhone::lock, &VirtualPhone::unlock, 403, "no amount shown"},
    };
    for (const auto& [name, begins, ends, status, says] : rows) {
        show("tote");
        const std::size_t first = owner.asked().size();
        owner.react = [&](std::size_t number, TimePoint, const std::stop_token&) {
            if (number > first) return kDeny;
            (phone().*begins)();
            const bool gone = status == 409;
            while (gone && !engine.get("/status").json()["hosts"].empty() &&
                   !engine.get("/status").json()["devices"].empty()) {
                std::this_thread::yield();
            }
            return kApprove;
        };
        EXPECT_THAT(RunningEngine::errorOf(tap("€12.50"), status), HasSubstr(says)) << name;
        (phone().*ends)();
        phone().unlock();
        engine.awaitMatched();
        EXPECT_EQ(touches(), 0U) << name;
    }
}

TEST_F(Guard, AQuestionGoesWithItsClient) {
    show("tote");
    std::vector<std::string> events;
    constexpr std::array kLate = {ApprovalAnswer::timeout, kApprove};
    // Until the last of the threads that use them has gone.
    const auto asked = std::make_shared<std::array<std::promise<void>, kLate.size()>>();
    owner.react = [=](std::size_t number, TimePoint, const std::stop_token& withdrawn) {
        const auto withdrawnSeen = std::make_shared<std::promise<void>>();
        const std::stop_callback seen(withdrawn, [=] { withdrawnSeen->set_value(); });
        asked->at(number).set_value();
        withdrawnSeen->get_future().wait();
        return kLate.at(number);
    };
    for (auto& question : *asked) {
        std::stop_source client;
        auto reply = std::async(std::launch::async, [&] {
            return httpPost(engine.url(), "/tap", at("€12.50"),
                            {.timeout = std::chrono::seconds(60), .stop = client.get_token()});
        });
        question.get_future().wait();
        client.request_stop();
        EXPECT_FALSE(reply.get());
        events.insert(events.end(), {"asked", "withdrawn"});
        expectLogged(events);
    }
    EXPECT_EQ(touches(), 0U);
}

TEST_F(Guard, AClickIsJudgedWhereThePointerIs) {
    owner.always(kNoAnswer);
    show("transfer");
    Json button = at("Confirm");
    EXPECT_EQ(engine.post("/move", button).status, 200);
    EXPECT_EQ(engine.post("/nudge", {{"click", true}}).status, 403);
    ASSERT_THAT(owner.asked(), SizeIs(1));
    EXPECT_THAT(owner.asked()[0].why, HasSubstr(" on a payment screen showing €25.00"));
    EXPECT_EQ(owner.asked()[0].place, (PlaceOnScreen{button["x"], button["y"]}));
    EXPECT_EQ(touches(), 0U);

    owner.always(kApprove);
    EXPECT_EQ(engine.post("/nudge", {{"click", true}}).status, 200);
    EXPECT_EQ(count("transfers"), 1);

    // Moved by counts, the pointer is somewhere: a spot without a label.
    owner.always(kNoAnswer);
    show("transfer");
    EXPECT_EQ(engine.post("/nudge", {{"dx", 5}, {"dy", 3}}).status, 200);
    EXPECT_EQ(engine.post("/nudge", {{"click", true}}).status, 403);
    EXPECT_EQ(owner.asked().back().what, "tap the screen");
    EXPECT_EQ(owner.asked().back().place, std::nullopt);
    // A click after a motion may land on the button although the pointer is beside it.
    EXPECT_EQ(engine.post("/move", {{"x", 0.5}, {"y", 0.99}, {"fraction", true}}).status, 200);
    EXPECT_EQ(engine.post("/nudge", {{"dy", -200}, {"click", true}}).status, 403);
    EXPECT_THAT(owner.asked(), SizeIs(4));
    EXPECT_EQ(touches(), 0U);
}

TEST_F(Guard, ALabelThatThePointerHidesDoesNotSlipThrough) {
    owner.always(kNoAnswer);
    for (const double beside : {-0.05, -0.03, 0.0, 0.03, 0.05}) {
        show("transfer");
        Json place = at("Confirm");
        place["x"] = place["x"].get<double>() + beside;
        EXPECT_EQ(engine.post("/move", place).status, 200);
        EXPECT_EQ(engine.post("/nudge", {{"click", true}}).status, 403) << beside;
        EXPECT_EQ(tap("Confirm").status, 403) << beside;
        EXPECT_TRUE(owner.asked().back().place) << "the panel shows where";
        EXPECT_EQ(touches(), 0U);
    }
    // Elsewhere the pointer may lie where it likes.
    const std::size_t asked = owner.asked().size();
    show("home");
    EXPECT_EQ(engine.post("/move", at("Settings")).status, 200);
    EXPECT_EQ(engine.post("/nudge", {{"click", true}}).status, 200);
    EXPECT_EQ(owner.asked().size(), asked);
}

TEST_F(Guard, WhateverPressesReturnOrSpaceIsJudgedAsThat) {
    const std::pair<const char*, Json> pressing[] = {
        {"/key", {{"key", "Return"}, {"modifiers", {"shift"}}}},
        {"/key", {{"key", "\n"}}},
        {"/key", {{"key", " "}}},
        {"/type", {{"text", "ref 1\r2"}}}};
    owner.always(kNoAnswer);
    show("transfer");
    for (const auto& [path, body] : pressing) {
        EXPECT_EQ(engine.post(path, body).status, 403) << body;
        EXPECT_EQ(owner.asked().back().why, "Enter on a payment screen showing €25.00") << body;
    }
    EXPECT_THAT(owner.asked(), SizeIs(std::size(pressing)));
    EXPECT_EQ(keys(), 0U);
    // What cannot press the button goes through unasked.
    EXPECT_EQ(engine.post("/type", {{"text", "ref 12345"}}).status, 200);
    EXPECT_EQ(engine.post("/key", {{"key", "Tab"}}).status, 200);
    EXPECT_EQ(engine.post("/key", {{"key", "space"}, {"modifiers", {"cmd"}}}).status, 200);
    EXPECT_THAT(owner.asked(), SizeIs(std::size(pressing)));
    EXPECT_GT(keys(), 0U);
}

TEST_F(Guard, ASlideToPayIsAskedAboutWhereverItGoes) {
    owner.always(kNoAnswer);
    show("checkout");
    Json slide = {{"x1", 0.12}, {"x2", 0.95}, {"duration", 0.6}, {"fraction", true}};
    slide["y1"] = slide["y2"] = at("Slide to pay")["y"];
    EXPECT_EQ(engine.post("/swipe", slide).status, 403);
    EXPECT_EQ(owner.asked()[0].why, "a \"Slide to pay\" control for €48.00");
    EXPECT_EQ(touches(), 0U);
    owner.always(kApprove);
    EXPECT_EQ(engine.post("/swipe", slide).status, 200);
    EXPECT_TRUE(engine.awaitPage("paid"));
    EXPECT_EQ(count("payments"), 1);
}

TEST_F(Guard, TurnedOffItAsksNothing) {
    std::filesystem::create_directories(engine.wiring().files().settings.parent_path());
    ASSERT_TRUE(replaceFile(engine.wiring().files().settings, "{\"askBeforePayments\": false}"));
    show("tote");
    EXPECT_EQ(tap("€12.50").status, 200);
    EXPECT_EQ(count("priceTaps"), 1);
    EXPECT_EQ(engine.get("/status").json()["paymentGuard"], false);
    ASSERT_TRUE(replaceFile(engine.wiring().files().settings, "{\"askBeforePayments\": true}"));
    show("tote");
    EXPECT_EQ(tap("€12.50").status, 403) << "read at every action";
    EXPECT_THAT(owner.asked(), SizeIs(1));
}

class HardScreens : public Guard {
 protected:
    HardScreens() : Guard(TANDREL_SOURCE_DIR "/tests/data/scenarios/hard_screens.json") {}
};

TEST_F(HardScreens, TapsAreJudgedAsTheRulesSay) {
    // A page, what is tapped on it and why that is asked about; empty: it goes ahead unasked.
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"till", "Pay €5.00", "a payment button (\"Pay €5.00\")"},
        {"till", "Till", ""},
        {"priceAbove", "€4.99", "a price button (\"€4.99\")"},
        {"amountAfter", "31,20 €", "a price button (\"31,20 €\")"},
        {"twoLines", "Confirm", "\"Confirm\" on a payment screen showing €31.20"},
        {"subscription", "Subscribe", "a payment button (\"Subscribe\")"},
        {"subscription", "Start free trial",
         "\"Start free trial\" on a payment screen showing €9.99"},
        {"chat", "Message", ""},
        // What the second layer adds.
        {"priceAbove", "Get", "\"Get\" on a payment screen showing €4.99"},
        {"twoLines", "your order", "\"your order\" on a payment screen showing €31.20"},
        {"german", "Zahlungspflichtig bestellen",
         "a payment button (\"Zahlungspflichtig bestellen\")"},
        {"misread", "Confinn", "\"Confinn\" on a payment screen showing €80.00"},
    };
    for (const auto& [page, label, why] : rows) {
        // Away from every text, which the pointer would hide.
        ASSERT_EQ(engine.post("/move", {{"x", 0.99}, {"y", 0.7}, {"fraction", true}}).status, 200);
        show(page);
        const std::size_t asked = owner.asked().size();
        const std::string name = std::string(page) + ": " + label;
        const bool passes = *why == '\0';
        EXPECT_EQ(tap(label).status, passes ? 200 : 403) << name;
        ASSERT_EQ(owner.asked().size() - asked, passes ? 0U : 1U) << name;
        if (!passes) {
            EXPECT_EQ(owner.asked().back().why, why) << name;
        }
        EXPECT_EQ(touches(), passes ? 1U : 0U) << name;
    }
}

TEST_F(HardScreens, ATapRightAfterAnotherIsJudgedByThePageThatThatOneLedTo) {
    show("till");
    const Json pay = at("Pay €5.00");
    show("toTill");
    EXPECT_EQ(tap("Next").status, 200);
    EXPECT_EQ(engine.post("/tap", pay).status, 403);
    EXPECT_EQ(touches(), 1U);
}

TEST_F(HardScreens, AnIconOnAPaymentScreenIsAskedAbout) {
    show("iconOnly");
    Json icon = at("Confirm");
    icon["y"] = icon["y"].get<double>() - 130.0 / 874;  // points above it, of the phone's height
    EXPECT_EQ(engine.post("/tap", icon).status, 403);
    EXPECT_THAT(owner.asked()[0].why, HasSubstr(" on a payment screen showing €80.00"));
    EXPECT_EQ(touches(), 0U);
}

TEST_F(HardScreens, APasscodeIsTypedOnlyWithTheOwner) {
    show("passcode");
    EXPECT_EQ(engine.get("/look?maxEdge=300").status, 200) << "so that the guard knows the screen";
    EXPECT_EQ(engine.post("/type", {{"text", "4821"}}).status, 403);
    EXPECT_EQ(owner.asked()[0].what, "type on a passcode screen");
    EXPECT_EQ(keys(), 0U);
    EXPECT_EQ(engine.post("/type", {{"text", "hello"}}).status, 200);
}

TEST_F(HardScreens, OfManyClientsExactlyTheApprovedOnesTap) {
    constexpr int kClients = 32;
    show("till");
    owner.react = [](std::size_t number, TimePoint, const std::stop_token&) {
        return number % 3 == 0 ? kApprove : kNoAnswer;
    };
    const Json button = at("Pay €5.00");
    std::atomic<int> done = 0;
    std::atomic<int> unanswered = 0;
    {
        std::vector<std::jthread> clients;
        for (int i = 0; i < kClients; ++i) {
            clients.emplace_back([&] {
                const int status = engine.post("/tap", button).status;
                if (status == 200) ++done;
                if (status == 403) ++unanswered;
            });
        }
    }
    // Whoever waited too long for a turn, or came after ten questions, was sent away without one.
    EXPECT_LE(owner.asked().size(), 10U);
    EXPECT_EQ(done + unanswered, static_cast<int>(owner.asked().size()));
    EXPECT_EQ(done, static_cast<int>((owner.asked().size() + 2) / 3));
    EXPECT_GT(done, 1);
    EXPECT_FALSE(owner.overlapped);
    EXPECT_EQ(touches(), static_cast<std::size_t>(done));
    EXPECT_EQ(count("paid"), done);
}

}  // namespace
}  // namespace tandrel
