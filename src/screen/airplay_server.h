#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/mutex.h"
#include "http/message.h"
#include "platform/airplay_receiver.h"
#include "platform/text_recognizer.h"
#include "screen/window_capture.h"

namespace tandrel {

// Serves the mirrored phone's picture and its changes over HTTP, and holds the one window capture
// that they come from. A capture that failed or ended is made anew by the next request. Any thread.
class AirPlayServer {
 public:
    struct Services {
        Windows& windows;
        AirPlayReceiver* receiver;  // none: only windows that others opened are seen
        TextRecognizer& recognizer;
        Clock& clock;
        std::function<bool()> mayRecord;  // whether the screen may be recorded
        std::string app;                  // how /status names its sender
        std::string version;
    };

    // `windowId`: that window and no other. Everything in `services` outlives the server.
    AirPlayServer(Services services, std::optional<std::uint32_t> windowId);
    ~AirPlayServer();
    AirPlayServer(const AirPlayServer&) = delete;
    AirPlayServer& operator=(const AirPlayServer&) = delete;

    // The running capture, else a new one. The error is also kept for /status.
    Result<std::shared_ptr<WindowCapture>> capture();
    // The running capture, if any; none is started.
    std::shared_ptr<WindowCapture> current() const;
    // Ends the capture; the next request makes a new one.
    void reset();
    // The watchdog's step: finds the mirroring window and keeps its capture running; where there is
    // none, keeps the receiver of our own running.
    void keepAlive();
    // Ends the capture for good.
    void stop();

    // The reply to one request. Blocks: /wait for as long as it was told to.
    HTTPResponse handle(const HTTPRequest& request);

    // The capture's window, or the receiver and what is wrong, in a form for the engine's /status.
    Json summary() const;

    // Called, on any thread and without a lock held, when a picture came or went. An empty one ends
    // the calls and waits for one under way.
    void setOnPictureChanged(std::function<void()> changed);

 private:
    HTTPResponse status(const HTTPRequest& request);
    HTTPResponse frame(const HTTPRequest& request);
    HTTPResponse wait(const HTTPRequest& request);
    HTTPResponse changes(const HTTPRequest& request);

    Result<std::shared_ptr<WindowCapture>> startCapture();
    std::string reasonFor(const Error& error) const;
    std::optional<std::string> lastError() const;
    void keepError(const std::optional<std::string>& error);
    void tellChanged();

    const Services to_;
    const std::optional<std::uint32_t> windowId_;
    Mutex starting_;  // one capture is made at a time; held while windows are searched
    bool stopped_ OWNED_BY(starting_) = false;
    mutable Mutex mutex_;
    std::shared_ptr<WindowCapture> capture_ OWNED_BY(mutex_);
    std::optional<std::string> lastError_ OWNED_BY(mutex_);
    Mutex changedMutex_;  // held while `changed_` runs, which returns soon
    std::function<void()> changed_ OWNED_BY(changedMutex_);
};

}  // namespace tandrel
