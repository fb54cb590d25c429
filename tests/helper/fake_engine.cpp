#include "helper/fake_engine.h"

#include <cstdlib>
#include <stdexcept>

#include <gtest/gtest.h>

#include "base/base64.h"
#include "support/eventually.h"

namespace tandrel {
namespace {

constexpr auto kPatience = std::chrono::seconds(60);

}  // namespace

FakeEngine::FakeEngine()
    : server_(0, [this](const HTTPRequest& request) { return handle(request); }) {
    const auto done = [](const HTTPRequest& request) {
        const std::string phone = textMember(request.body, "device").value_or("PHONE-A");
        return HTTPResponse::json({{"ok", true}, {"device", phone}});
    };
    for (const char* path :
         {"/tap", "/swipe", "/move", "/nudge", "/type", "/key", "/home", "/match", "/pair"}) {
        answer(path, done);
    }
    answerLook(Json::object());
    answer("/status", Json{{"app", "Tandrel"}, {"paused", false}});
    answer("/devices", Json::parse(R"({"devices":[
        {"id":"PHONE-A","name":"Anna's iPhone","frameAge":0.2},
        {"id":"PHONE-B","name":"Ben's iPhone","frameAge":1.5}]})"));
    if (!server_.start()) throw std::runtime_error("no port for the fake engine");
    ::setenv("TANDREL_ENGINE_URL", url().c_str(), 1);
}

FakeEngine::~FakeEngine() { ::unsetenv("TANDREL_ENGINE_URL"); }

void FakeEngine::answer(const std::string& path, Handler handler) {
    std::lock_guard lock(mutex_);
    handlers_[path] = std::move(handler);
}

void FakeEngine::answer(const std::string& path, const Json& reply) {
    answer(path, [reply](const HTTPRequest&) { return HTTPResponse::json(reply); });
}

std::vector<FakeEngine::Request> FakeEngine::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<FakeEngine::Request> FakeEngine::requests(const std::string& path) const {
    std::vector<Request> found = requests();
    std::erase_if(found, [&](const Request& request) { return request.path != path; });
    return found;
}

void FakeEngine::await(const std::string& path, std::size_t count) {
    std::unique_lock lock(mutex_);
    const auto isThere = [&] {
        return static_cast<std::size_t>(std::ranges::count(requests_, path, &Request::path)) >=
               count;
    };
    if (!changed_.wait_for(lock, kPatience, isThere)) {
        throw std::runtime_error("the engine was never asked for " + path);
    }
}

HTTPResponse FakeEngine::handle(const HTTPRequest& request) {
    Handler handler;
    {
        std::lock_guard lock(mutex_);
        requests_.push_back({request.method, request.path, request.query, request.body});
        if (const auto found = handlers_.find(request.path); found != handlers_.end()) {
            handler = found->second;
        }
    }
    changed_.notify_all();
    return handler ? handler(request) : HTTPResponse::error("not found", 404);
}

Json FakeEngine::lookReply(const Json& other, std::size_t bytes) {
    Json reply = Json::parse(R"({"mimeType":"image/png","ocr":[],"lines":[],"unread":[],
        "frameAge":0.25,"X-Device":"PHONE-A","X-Image-Width":723,"X-Image-Height":1568,
        "X-Screen-Width":1179,"X-Screen-Height":2556})");
    reply["image"] = base64(Bytes(bytes));
    reply.update(other);
    return reply;
}

void awaitClientGone(const HTTPRequest& request) {
    EXPECT_TRUE(eventually([&] { return request.clientGone.stop_requested(); }));
}

}  // namespace tandrel
