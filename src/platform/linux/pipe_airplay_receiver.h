#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/clock.h"
#include "base/file_descriptor.h"
#include "base/mutex.h"
#include "image/gdp_reader.h"
#include "platform/airplay_receiver.h"
#include "platform/linux/receiver_child.h"
#include "platform/windows.h"

namespace tandrel {

// Runs the AirPlay receiver program as a child and takes its frames through a pipe, so that no
// window of it is needed. To the rest its picture is a window's, there while a phone mirrors.
//
// A thread of its own reads what comes and waits for nothing else; a program that stalls in
// mid-frame, writes nonsense or ends is started again, later each time.
class PipeAirPlayReceiver final : public AirPlayReceiver, public Windows {
 public:
    struct Options {
        std::string program = "uxplay";  // looked for on the search path
        std::string name;                // as phones list it
        // How long a program runs on in the middle of a message before it counts as stuck.
        Duration longestPause = std::chrono::seconds(5);
        Duration shortestBackOff = std::chrono::seconds(1);
        Duration longestBackOff = std::chrono::seconds(60);
        std::function<bool(pid_t)> isConnected = hasTcpConnection;
    };
    explicit PipeAirPlayReceiver(Options options);
    ~PipeAirPlayReceiver() override;
    PipeAirPlayReceiver(const PipeAirPlayReceiver&) = delete;
    PipeAirPlayReceiver& operator=(const PipeAirPlayReceiver&) = delete;

    void start() override;
    void stop() override;
    ReceiverStatus status() override;
    std::optional<bool> isOn() override;

    Result<std::vector<WinInfo>> all() override;
    Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events) override;

    // What the program is started with: raw frames framed into descriptor 3, no sound, and a height
    // from which small print can be read.
    static std::vector<std::string> arguments(const std::string& name);

 private:
    class Stream;
    struct Session;

    void run(const std::stop_token& stop);
    bool serve(const ReceiverChild& child, const std::stop_token& stop);
    bool takeFrames(const ReceiverChild& child, Session& session);
    void takePicture(const PixelBuffer& frame, const ReceiverChild& child, Session& session);
    void takeWords(const ReceiverChild& child, Session& session);
    bool look(const ReceiverChild& child, Session& session);
    void beginPicture(const RawVideoForm& form, pid_t pid);
    void deliver(const PixelBuffer& frame);
    void endPicture(const std::string& why);
    void setState(ReceiverStatus::State state, const std::string& error = {});
    void pause(Duration time, const std::stop_token& stop);

    const Options options_;
    FileDescriptor wake_;

    Mutex mutex_;
    ReceiverStatus status_ OWNED_BY(mutex_);
    std::optional<WinInfo> window_ OWNED_BY(mutex_);
    std::uint32_t sessions_ OWNED_BY(mutex_) = 0;
    Mutex streamsMutex_;  // held while events run, which return soon
    std::map<const Stream*, WindowEvents> streams_ OWNED_BY(streamsMutex_);
    PixelBuffer newest_ OWNED_BY(streamsMutex_);
    Mutex threadMutex_;  // one start or stop at a time
    std::jthread thread_ OWNED_BY(threadMutex_);
};

}  // namespace tandrel
