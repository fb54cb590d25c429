#include "app/picture_feed.h"

#include "http/client.h"

namespace tandrel {
namespace {

constexpr Duration kBetweenPictures = std::chrono::milliseconds(200);
constexpr Duration kPatience = std::chrono::seconds(2);
constexpr const char* kTarget = "/screenshot?maxEdge=840&format=png";

QImage fetch(const LoopbackUrl& engine, std::stop_token stop) {
    const auto reply = httpGet(engine, kTarget, {.timeout = kPatience, .stop = std::move(stop)});
    if (!reply || reply->status != 200) return {};
    return QImage::fromData(reply->body.data(), static_cast<int>(reply->body.size()));
}

}  // namespace

PictureFeed::PictureFeed(MainLoop& loop, Clock& clock, std::function<void(const QImage&)> show)
    : loop_(loop),
      show_(std::make_shared<std::function<void(const QImage&)>>(std::move(show))),
      queue_("tandrel.picture", clock) {}

PictureFeed::~PictureFeed() {
    stopping_.request_stop();
    queue_.stop();
    *show_ = [](const QImage&) {};
}

void PictureFeed::setEngine(LoopbackUrl engine) {
    queue_.post([this, engine = std::move(engine)] {
        queue_.assertCurrent();
        engine_ = engine;
    });
}

void PictureFeed::setWatched(bool watched) {
    queue_.post([this, watched] {
        queue_.assertCurrent();
        watched_ = watched;
        if (watched && !fetching_) fetchAgain();
    });
}

void PictureFeed::fetchAgain() {
    fetching_ = watched_ && !stopping_.stop_requested();
    if (!fetching_) return;
    if (engine_) {
        const QImage image = fetch(*engine_, stopping_.get_token());
        loop_.post([show = show_, image] { (*show)(image); });
    }
    queue_.postAfter(kBetweenPictures, [this] {
        queue_.assertCurrent();
        fetchAgain();
    });
}

}  // namespace tandrel
