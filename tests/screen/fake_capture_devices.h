#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/capture_devices.h"

namespace tandrel {

// Capture devices that a test plugs in and out by hand. Frames, plugging and answers come on the
// test's own thread.
class FakeCaptureDevices final : public CaptureDevices {
 public:
    static CaptureDeviceInfo phone(const std::string& id, const std::string& name) {
        return {id, name, "iOS Device", true};
    }

    void plugIn(const CaptureDeviceInfo& device) {
        {
            std::lock_guard lock(mutex_);
            devices_.push_back(device);
        }
        tellChange();
    }
    void unplug(const std::string& id) {
        {
            std::lock_guard lock(mutex_);
            std::erase_if(devices_, [&](const auto& device) { return device.id == id; });
        }
        tellChange();
    }
    void tellChange() {
        std::lock_guard calling(calling_);
        if (changed_) changed_();
    }
    // `open` fails with this sentence until there is none.
    void refuse(const std::string& id, const std::optional<std::string>& sentence) {
        std::lock_guard lock(mutex_);
        refusals_[id] = sentence;
    }
    // A frame that every capture brings as soon as it is opened.
    void setOnOpened(const PixelBuffer& frame) {
        std::lock_guard lock(mutex_);
        first_ = frame;
    }
    // Keeps the answer about access until `answerAccess`.
    void holdAccess() { holdsAccess_ = true; }
    void answerAccess(bool granted) { answer_(granted); }

    // Delivers a frame of the device's running capture; false when none runs.
    bool send(const std::string& id, const PixelBuffer& frame) {
        FrameSink sink;
        {
            std::lock_guard lock(mutex_);
            const auto running = running_.find(id);
            if (running == running_.end()) return false;
            sink = running->second;
        }
        sink(frame);
        return true;
    }
    int opened(const std::string& id) {
        std::lock_guard lock(mutex_);
        return opened_[id];
    }

    void allowScreenCaptureDevices() override { isAllowed_ = true; }
    std::vector<CaptureDeviceInfo> devices() override {
        EXPECT_TRUE(isAllowed_);
        std::lock_guard lock(mutex_);
        return devices_;
    }
    void setOnDevicesChanged(std::function<void()> changed) override {
        std::lock_guard calling(calling_);
        changed_ = std::move(changed);
    }
    void requestAccess(std::function<void(bool)> answer) override {
        EXPECT_TRUE(changed_) << "a phone that is plugged in now would be missed";
        answer_ = std::move(answer);
        if (!holdsAccess_) answer_(true);
    }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                 FrameSink sink) override {
        std::lock_guard lock(mutex_);
        ++opened_[device.id];
        if (const auto& refusal = refusals_[device.id]) return fail(*refusal);
        if (first_) sink(first_);
        running_[device.id] = std::move(sink);
        return std::make_unique<Session>(*this, device.id);
    }

 private:
    class Session final : public CaptureSession {
     public:
        Session(FakeCaptureDevices& devices, std::string id)
            : devices_(devices), id_(std::move(id)) {}
        ~Session() override {
            std::lock_guard lock(devices_.mutex_);
            devices_.running_.erase(id_);
        }

     private:
        FakeCaptureDevices& devices_;
        const std::string id_;
    };

    std::mutex mutex_;
    std::mutex calling_;  // held while `changed_` runs
    std::vector<CaptureDeviceInfo> devices_;
    std::map<std::string, FrameSink> running_;
    std::map<std::string, std::optional<std::string>> refusals_;
    std::map<std::string, int> opened_;
    std::function<void()> changed_;
    std::function<void(bool)> answer_;
    PixelBuffer first_;
    bool holdsAccess_ = false;
    std::atomic<bool> isAllowed_ = false;
};

}  // namespace tandrel
