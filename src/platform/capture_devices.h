#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/pixel_buffer.h"
#include "base/result.h"

// The system's video capture devices, of which a plugged-in phone's screen is one.
namespace tandrel {

// How a screen reaches this computer: by its phone's own cable, through a video grabber, or
// mirrored over the network. Only the first says whose it is.
enum class CaptureLink { cable, grabber, airplay };

inline bool tellsWhose(CaptureLink link) { return link == CaptureLink::cable; }

struct CaptureDeviceInfo {
    std::string id;       // unique and stable across plugging
    std::string name;     // for people: the phone's name
    std::string modelId;  // contains "iOS" for a phone's screen
    bool connected = true;
    CaptureLink link = CaptureLink::cable;

    bool operator==(const CaptureDeviceInfo&) const = default;
};

// One running capture. Ending it stops the frames; no frame arrives once the destructor returned.
class CaptureSession {
 public:
    virtual ~CaptureSession() = default;
};

// Called for each new frame on a thread of the backend; must return soon and may keep the frame.
using FrameSink = std::function<void(PixelBuffer)>;

class CaptureDevices {
 public:
    virtual ~CaptureDevices() = default;
    // Makes phone screens appear among the devices, where the system asks for that.
    virtual void allowScreenCaptureDevices() = 0;
    // The devices there are now. Any thread.
    virtual std::vector<CaptureDeviceInfo> devices() = 0;
    // Called on a thread of the backend after a device came or went. Set once, before any other
    // call that could cause it; an empty function ends the calls and waits for one under way.
    virtual void setOnDevicesChanged(std::function<void()> changed) = 0;
    // Asks the owner for access to cameras where the system wants that; the answer may come at
    // once.
    virtual void requestAccess(std::function<void(bool granted)> answer) = 0;
    // Starts capturing. May block for a moment. The error is the system's sentence.
    virtual Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                         FrameSink sink) = 0;
};

}  // namespace tandrel
