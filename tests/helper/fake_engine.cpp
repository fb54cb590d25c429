#include "helper/fake_engine.h"

#include <cstdlib>
#include <future>
#include <stdexcept>

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
    for (const char* path : {"/tap", "/swipe", "/move", "/nudge", "/type", "/key", "/home"}) {
        handlers_[path] = done;
    }
    handlers_["/look"] = [](const HTTPRequest& request) {
        return HTTPResponse::json(
            lookReply(3, {{"mimeType", "image/" + request.query.at("format")}}));
    };
    handlers_["/status"] = [](const HTTPRequest&) {
        return HTTPResponse::json({{"app", "Tandrel"}, {"paused", false}});
    };
    handlers_["/devices"] = [](const HTTPRequest&) {
        return HTTPResponse::json(
            {{"devices",
              {{{"id", "PHONE-A"}, {"name", "Anna's iPhone"}, {"frameAge", 0.2}},
               {{"id", "PHONE-B"}, {"name", "Ben's iPhone"}, {"frameAge", 1.5}}}}});
    };
    if (!server_.start()) throw std::runtime_error("no port for the fake engine");
    ::setenv("TANDREL_ENGINE_URL", url().c_str(), 1);
}

FakeEngine::~FakeEngine() { ::unsetenv("TANDREL_ENGINE_URL"); }

void FakeEngine::answer(const std::string& path, Handler handler) {
    std::lock_guard lock(mutex_);
    handlers_[path] = std::move(handler);
}

std::string FakeEngine::url() const { return "http://127.0.0.1:" + std::to_string(port()); }

std::vector<FakeEngine::Request> FakeEngine::requests(const std::string& path) const {
    std::lock_guard lock(mutex_);
    std::vector<Request> found;
    for (const Request& request : requests_) {
        if (request.path == path) found.push_back(request);
    }
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

Json lookReply(std::size_t bytes, const Json& more) {
    std::string image((bytes + 2) / 3 * 4, 'A');
    for (std::size_t i = bytes; i % 3 != 0; ++i) image[image.size() - 1 - (i - bytes)] = '=';
    Json reply = {{"image", image},         {"mimeType", "image/png"}, {"ocr", Json::array()},
                  {"lines", Json::array()}, {"unread", Json::array()}, {"frameAge", 0.25},
                  {"X-Device", "PHONE-A"},  {"X-Image-Width", 723},    {"X-Image-Height", 1568},
                  {"X-Screen-Width", 1179}, {"X-Screen-Height", 2556}};
    reply.update(more);
    return reply;
}

void awaitClientGone(const HTTPRequest& request) {
    std::promise<void> gone;
    const std::stop_callback callback(request.clientGone, [&] { gone.set_value(); });
    if (gone.get_future().wait_for(kPatience) != std::future_status::ready) {
        throw std::runtime_error("the client never went");
    }
}

}  // namespace tandrel
