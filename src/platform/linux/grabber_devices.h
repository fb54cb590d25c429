#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/clock.h"
#include "base/file_descriptor.h"
#include "base/mutex.h"
#include "platform/capture_devices.h"
#include "platform/linux/video_device.h"
#include "platform/linux/video_nodes.h"

namespace tandrel {

// The video grabbers that show a phone's screen through its video adapter. Which ones do is for the
// owner to say: a camera must never be taken for a phone, and nothing tells the two apart.
//
// A thread "grabbers" follows what is plugged in and chosen. Nothing says whose picture a grabber
// shows either, so it is another screen each time it appears. One that fails is gone for a while,
// longer each time, and then tried again.
class GrabberDevices final : public CaptureDevices {
 public:
    struct Options {
        std::unique_ptr<VideoNodes> nodes;
        // The grabbers' names, paths or ports, separated by commas; none when the picture is to
        // come another way. Read again and again, on the thread.
        std::function<std::optional<std::string>()> chosen;
    };
    // Both outlive the object and its sessions, which end before it.
    GrabberDevices(Options options, VideoCalls& calls, Clock& clock);
    ~GrabberDevices() override;
    GrabberDevices(const GrabberDevices&) = delete;
    GrabberDevices& operator=(const GrabberDevices&) = delete;

    static constexpr Duration kBetweenLooks = std::chrono::seconds(1);
    static constexpr Duration kShortestBackOff = std::chrono::seconds(1);
    static constexpr Duration kLongestBackOff = std::chrono::seconds(60);

    // What keeps the grabbers from showing a phone and the one thing to do about it, a sentence
    // each. Any thread.
    std::vector<std::string> troubles();

    void allowScreenCaptureDevices() override {}
    std::vector<CaptureDeviceInfo> devices() override;
    void setOnDevicesChanged(std::function<void()> changed) override;
    void requestAccess(std::function<void(bool granted)> answer) override { answer(true); }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                 FrameSink sink) override;

 private:
    struct Grabber {
        VideoNode node;
        std::string name;
        bool delivers = false;
        std::string id;       // of this appearance
        std::string failure;  // why it gives no picture; empty while it may
        TimePoint until{};    // when it is tried again
        TimePoint opened{};
        Duration backOff = kShortestBackOff;
    };
    // What is told to others, as of the last look.
    struct Seen {
        std::vector<CaptureDeviceInfo> devices;
        std::vector<std::string> troubles;
    };

    void run(const std::stop_token& stop);
    void look();
    void follow(const std::vector<VideoNode>& nodes);
    Grabber met(const VideoNode& node);
    Seen judge(const std::optional<std::string>& chosen);
    std::string adviceToChoose();
    Grabber* chosenBy(const std::string& wish, std::string& trouble);
    void takeFailure(const std::string& id, const std::string& why);

    const Options options_;
    VideoCalls& calls_;
    Clock& clock_;
    const FileDescriptor wake_;

    // Looking is for the thread alone; `grabbersMutex_` is for those who report what became of one.
    Mutex grabbersMutex_;
    std::map<std::string, Grabber> grabbers_ OWNED_BY(grabbersMutex_);  // by path
    int appearances_ OWNED_BY(grabbersMutex_) = 0;
    const std::shared_ptr<Wakeup> looked_;  // guards the next two
    bool hasLooked_ = false;
    Seen seen_;
    std::set<std::string> told_;  // of the troubles, in the log; for the thread alone
    Mutex changedMutex_;          // held while it runs, which returns soon
    std::function<void()> changed_ OWNED_BY(changedMutex_);
    std::jthread thread_;
};

}  // namespace tandrel
