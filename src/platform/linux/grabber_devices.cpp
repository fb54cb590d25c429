#include "platform/linux/grabber_devices.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include "base/log.h"
#include "base/unicode.h"
#include "platform/linux/video_stream.h"

namespace tandrel {
namespace {

constexpr const char* kGrabberModel = "iOS Device (grabber)";
constexpr Duration kSteady = std::chrono::minutes(1);
constexpr Duration kLongestFirstLook = std::chrono::seconds(5);
constexpr const char* kNone =
    "Cable: no video grabber is plugged in: connect the iPhone's video adapter to one, or use "
    "AirPlay (tandrel-app --set link airplay)";

std::vector<std::string> parseWishes(std::string_view text) {
    std::vector<std::string> wishes;
    while (!text.empty()) {
        const auto end = std::min(text.find(','), text.size());
        if (std::string wish = trimmed(text.substr(0, end)); !wish.empty()) {
            wishes.push_back(std::move(wish));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return wishes;
}

// Whether a path that the owner wrote, maybe one of udev's links, is that of the node.
bool leadsTo(const std::string& wish, const std::string& path) {
    if (!wish.starts_with('/')) return false;
    std::error_code error;
    return wish == path || std::filesystem::weakly_canonical(wish, error) == path;
}

std::string quotedList(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) {
        list += fmt::format("{}\"{}\"", list.empty() ? "" : ", ", name);
    }
    return list;
}

}  // namespace

GrabberDevices::GrabberDevices(Options options, VideoCalls& calls, Clock& clock)
    : options_(std::move(options)),
      calls_(calls),
      clock_(clock),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      looked_(std::make_shared<Wakeup>()),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

GrabberDevices::~GrabberDevices() {
    thread_.request_stop();
    ::eventfd_write(wake_.get(), 1);
    thread_.join();
}

void GrabberDevices::run(const std::stop_token& stop) {
    ::pthread_setname_np(::pthread_self(), "grabbers");
    while (!stop.stop_requested()) {
        look();
        options_.nodes->awaitChange(wake_.get(), kBetweenLooks);
        eventfd_t ignored = 0;
        ::eventfd_read(wake_.get(), &ignored);
    }
}

void GrabberDevices::look() {
    follow(options_.nodes->list());
    Seen now = judge(options_.chosen());
    // Once for all the attempts on a grabber that keeps failing.
    for (const std::string& trouble : now.troubles) {
        if (told_.insert(trouble).second) log(trouble);
    }
    bool isOther = false;
    {
        std::lock_guard lock(looked_->mutex);
        isOther = now.devices != seen_.devices;
        seen_ = std::move(now);
        hasLooked_ = true;
    }
    looked_->condition.notify_all();
    if (!isOther) return;
    MutexLock lock(changedMutex_);
    if (changed_) changed_();
}

// A node that can't be asked yet, whose rights are still to be set, is asked again each time.
void GrabberDevices::follow(const std::vector<VideoNode>& nodes) {
    std::map<std::string, Grabber> known;
    {
        MutexLock lock(grabbersMutex_);
        known = grabbers_;
    }
    std::vector<std::pair<std::string, Grabber>> newOnes;
    for (const VideoNode& node : nodes) {
        const auto before = known.find(node.path);
        const bool isKnown = before != known.end() && before->second.node == node &&
                             (before->second.delivers || before->second.failure.empty());
        if (!isKnown) newOnes.emplace_back(node.path, met(node));
    }
    if (!newOnes.empty()) told_.clear();
    const TimePoint now = clock_.now();
    MutexLock lock(grabbersMutex_);
    std::erase_if(grabbers_, [&](const auto& entry) {
        return std::ranges::find(nodes, entry.first, &VideoNode::path) == nodes.end();
    });
    for (auto& [path, grabber] : newOnes) {
        if (grabber.delivers) grabber.id = fmt::format("grabber-{}", ++appearances_);
        grabbers_[path] = std::move(grabber);
    }
    for (auto& [path, grabber] : grabbers_) {
        if (!grabber.delivers || grabber.failure.empty() || now < grabber.until) continue;
        grabber.failure.clear();
        grabber.id = fmt::format("grabber-{}", ++appearances_);
    }
}

GrabberDevices::Grabber GrabberDevices::met(const VideoNode& node) {
    Grabber grabber;
    grabber.node = node;
    grabber.name = node.name;
    const auto identity = identifyVideo(calls_, node.path);
    if (!identity) {
        grabber.failure = identity.error().message;
        return grabber;
    }
    if (!identity->name.empty()) grabber.name = identity->name;
    grabber.delivers = identity->delivers;
    return grabber;
}

// The one grabber that the owner means.
GrabberDevices::Grabber* GrabberDevices::chosenBy(const std::string& wish, std::string& trouble) {
    MutexLock lock(grabbersMutex_);
    std::vector<Grabber*> meant;
    for (auto& [path, grabber] : grabbers_) {
        if (!grabber.delivers && grabber.failure.empty()) continue;
        const bool isMeant = wish == grabber.node.port || leadsTo(wish, path) ||
                             lowerCased(wish) == lowerCased(grabber.name);
        if (isMeant) meant.push_back(&grabber);
    }
    if (meant.size() == 1) return meant.front();
    if (meant.empty()) {
        trouble = fmt::format("Cable: the chosen grabber \"{}\" is not plugged in", wish);
        return nullptr;
    }
    std::vector<std::string> ways;
    for (const Grabber* grabber : meant) {
        ways.push_back(grabber->node.port.empty() ? grabber->node.path : grabber->node.port);
    }
    trouble = fmt::format("Cable: {} grabbers are called \"{}\": choose one by its port, {}",
                          meant.size(), wish, quotedList(ways));
    return nullptr;
}

GrabberDevices::Seen GrabberDevices::judge(const std::optional<std::string>& chosen) {
    Seen seen;
    if (!chosen) return seen;
    const auto wishes = parseWishes(*chosen);
    for (const std::string& wish : wishes) {
        std::string trouble;
        const Grabber* grabber = chosenBy(wish, trouble);
        MutexLock lock(grabbersMutex_);
        if (grabber != nullptr && !grabber->failure.empty()) {
            trouble = fmt::format("Cable: \"{}\": {}", grabber->name, grabber->failure);
        }
        if (!trouble.empty()) {
            seen.troubles.push_back(std::move(trouble));
            continue;
        }
        CaptureDeviceInfo info{.id = grabber->id,
                               .name = "iPhone on " + grabber->name,
                               .modelId = kGrabberModel,
                               .link = CaptureLink::grabber};
        if (std::ranges::find(seen.devices, info) == seen.devices.end()) {
            seen.devices.push_back(std::move(info));
        }
    }
    if (wishes.empty()) seen.troubles.push_back(adviceToChoose());
    return seen;
}

std::string GrabberDevices::adviceToChoose() {
    MutexLock lock(grabbersMutex_);
    std::vector<std::string> names;
    for (const auto& [path, grabber] : grabbers_) {
        if (grabber.delivers || !grabber.failure.empty()) names.push_back(grabber.name);
    }
    if (names.empty()) return kNone;
    return fmt::format(
        "Cable: say which grabber shows the iPhone: tandrel-app --set grabber NAME (there is {})",
        quotedList(names));
}

void GrabberDevices::takeFailure(const std::string& id, const std::string& why) {
    {
        MutexLock lock(grabbersMutex_);
        const auto entry = std::ranges::find_if(
            grabbers_, [&](const auto& candidate) { return candidate.second.id == id; });
        if (entry == grabbers_.end()) return;
        Grabber& grabber = entry->second;
        const TimePoint now = clock_.now();
        if (grabber.opened != TimePoint{} && now - grabber.opened >= kSteady) {
            grabber.backOff = kShortestBackOff;
        }
        grabber.failure = why;
        grabber.until = now + grabber.backOff;
        grabber.opened = {};
        grabber.backOff = std::min(grabber.backOff * 2, kLongestBackOff);
    }
    ::eventfd_write(wake_.get(), 1);
}

std::vector<std::string> GrabberDevices::troubles() {
    std::lock_guard lock(looked_->mutex);
    return seen_.troubles;
}

// What is there now is known after the first look, which a program that asks at its start awaits.
std::vector<CaptureDeviceInfo> GrabberDevices::devices() {
    const TimePoint deadline = systemClock().now() + kLongestFirstLook;
    std::unique_lock lock(looked_->mutex);
    while (!hasLooked_ && systemClock().now() < deadline) {
        systemClock().waitUntil(lock, *looked_, deadline);
    }
    return seen_.devices;
}

void GrabberDevices::setOnDevicesChanged(std::function<void()> changed) {
    MutexLock lock(changedMutex_);
    changed_ = std::move(changed);
}

Result<std::unique_ptr<CaptureSession>> GrabberDevices::open(const CaptureDeviceInfo& device,
                                                             FrameSink sink) {
    std::string path;
    {
        MutexLock lock(grabbersMutex_);
        for (auto& [candidate, grabber] : grabbers_) {
            if (grabber.id != device.id) continue;
            path = candidate;
            grabber.opened = clock_.now();
        }
    }
    if (path.empty()) return fail("the grabber was unplugged");
    auto session = VideoStream::open(
        calls_,
        {.path = path,
         .sink = std::move(sink),
         .ended = [this, id = device.id](const std::string& why) { takeFailure(id, why); }},
        clock_);
    if (!session) takeFailure(device.id, session.error().message);
    return session;
}

}  // namespace tandrel
