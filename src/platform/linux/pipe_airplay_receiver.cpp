#include "platform/linux/pipe_airplay_receiver.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "base/log.h"
#include "platform/linux/receiver_words.h"
#include "platform/linux/window_owner.h"

namespace tandrel {
namespace {

using State = ReceiverStatus::State;

// Above every number that an X server gives.
constexpr std::uint32_t kFirstId = 0xf000'0000;
constexpr std::uint32_t kMostIds = 0x00ff'ffff;
constexpr Duration kBetweenLooks = std::chrono::seconds(1);
constexpr Duration kBetweenSearches = std::chrono::seconds(15);
// A phone's connection is over when it was found gone so many times in a row.
constexpr int kLooksWithoutConnection = 2;
// Words written into a pipe may come only at the end; a program that is still there by then is on.
constexpr Duration kStartTime = std::chrono::seconds(3);
constexpr const char* kNotMirroring = "the iPhone stopped mirroring its screen";

bool isTurnedFrom(const RawVideoForm& before, const RawVideoForm& now) {
    return before.width == now.height && before.height == now.width && now.width != now.height;
}

int milliseconds(Duration duration) {
    return static_cast<int>(
        std::chrono::duration_cast<std::chrono::milliseconds>(duration).count());
}

}  // namespace

class PipeAirPlayReceiver::Stream final : public WindowStream {
 public:
    explicit Stream(PipeAirPlayReceiver& receiver) : receiver_(receiver) {}
    ~Stream() override {
        MutexLock lock(receiver_.streamsMutex_);
        receiver_.streams_.erase(this);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

 private:
    PipeAirPlayReceiver& receiver_;
};

// One run of the program.
struct PipeAirPlayReceiver::Session {
    GdpReader reader;
    ReceiverWords words;
    const TimePoint start = systemClock().now();
    TimePoint lastByte = start;
    TimePoint nextLook;
    std::optional<RawVideoForm> form;
    bool isMidMessage = false;
    bool areFramesOver = false;
    bool areWordsOver = false;
    bool hasPicture = false;
    bool everHadPicture = false;
    int looksWithoutConnection = 0;
    std::string error;  // why it is ended from here
};

PipeAirPlayReceiver::PipeAirPlayReceiver(Options options)
    : options_(std::move(options)), wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    status_.name = options_.name;
}

PipeAirPlayReceiver::~PipeAirPlayReceiver() { stop(); }

std::vector<std::string> PipeAirPlayReceiver::arguments(const std::string& name) {
    return {"-n", name, "-nh", "-as", "0", "-s", "3840x2160@30", "-vs", "gdppay ! fdsink fd=3"};
}

void PipeAirPlayReceiver::start() {
    MutexLock one(threadMutex_);
    if (thread_.joinable()) return;
    eventfd_t ignored = 0;
    ::eventfd_read(wake_.get(), &ignored);
    setState(State::starting);
    thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

void PipeAirPlayReceiver::stop() {
    MutexLock one(threadMutex_);
    if (!thread_.joinable()) return;
    thread_.request_stop();
    ::eventfd_write(wake_.get(), 1);
    thread_.join();
    thread_ = {};
    setState(State::off);
}

ReceiverStatus PipeAirPlayReceiver::status() {
    MutexLock lock(mutex_);
    return status_;
}

void PipeAirPlayReceiver::setState(State state, const std::string& error) {
    MutexLock lock(mutex_);
    if (!error.empty() && error != status_.error) log("airplay: " + error);
    status_.state = state;
    status_.error = error;
}

std::optional<bool> PipeAirPlayReceiver::isOn() {
    const State state = status().state;
    if (state == State::waiting || state == State::mirroring || state == State::stalled) {
        return true;
    }
    return isReceiverRunning();
}

void PipeAirPlayReceiver::run(const std::stop_token& stop) {
    ::pthread_setname_np(::pthread_self(), "airplay-pipe");
    Duration backOff = options_.shortestBackOff;
    while (!stop.stop_requested()) {
        const auto program = findProgram(options_.program);
        if (program.empty()) {
            setState(State::missing, missingReceiver(options_.program));
            pause(kBetweenSearches, stop);
            continue;
        }
        bool hadPicture = false;
        if (const auto child = ReceiverChild::start(program, arguments(options_.name)); child) {
            hadPicture = serve(*child, stop);
        } else {
            setState(State::failed, child.error().message);
        }
        if (stop.stop_requested()) return;
        backOff = hadPicture ? options_.shortestBackOff : backOff;
        pause(backOff, stop);
        backOff = std::min(backOff * 2, options_.longestBackOff);
    }
}

void PipeAirPlayReceiver::pause(Duration time, const std::stop_token& stop) {
    const TimePoint end = systemClock().now() + time;
    while (!stop.stop_requested()) {
        const Duration left = end - systemClock().now();
        if (left <= Duration::zero()) return;
        pollfd wait{wake_.get(), POLLIN, 0};
        ::poll(&wait, 1, std::max(milliseconds(left), 1));
    }
}

// Reads until the program ends, makes no sense or is to be stopped; says whether it showed
// anything.
bool PipeAirPlayReceiver::serve(const ReceiverChild& child, const std::stop_token& stop) {
    Session session;
    bool isRunning = true;
    while (isRunning && !stop.stop_requested()) {
        pollfd waits[] = {{child.frames(), POLLIN, 0},
                          {child.words(), POLLIN, 0},
                          {child.end(), POLLIN, 0},
                          {wake_.get(), POLLIN, 0}};
        // A pipe that nobody writes to any more is always ready; the program's end comes after.
        if (session.areFramesOver) waits[0].fd = -1;
        if (session.areWordsOver) waits[1].fd = -1;
        if (::poll(waits, std::size(waits), milliseconds(kBetweenLooks)) < 0 && errno != EINTR)
            break;
        if (waits[1].revents != 0) takeWords(child, session);
        if (waits[0].revents != 0) isRunning = takeFrames(child, session);
        if (waits[2].revents != 0) isRunning = false;
        isRunning = isRunning && look(child, session);
    }
    takeWords(child, session);
    endPicture(kNotMirroring);
    if (stop.stop_requested()) return session.everHadPicture;
    if (session.error.empty()) {
        const std::string last = session.words.lastError();
        session.error = last.empty() ? "the AirPlay receiver ended without a word"
                                     : "the AirPlay receiver ended: " + last;
    }
    const auto missing = session.words.missingPart();
    setState(missing ? State::missing : State::failed, missing.value_or(session.error));
    return session.everHadPicture;
}

void PipeAirPlayReceiver::takeWords(const ReceiverChild& child, Session& session) {
    char text[4096];
    // No more than a pipe holds at a time, so that a talkative program does not hold up its frames.
    for (int i = 0; i < 16; ++i) {
        const ssize_t count = ::read(child.words(), text, sizeof text);
        session.areWordsOver = count == 0;
        if (count <= 0) return;
        session.words.add({text, static_cast<std::size_t>(count)});
    }
}

// False when the stream makes no sense any more.
bool PipeAirPlayReceiver::takeFrames(const ReceiverChild& child, Session& session) {
    // As much as the pipe may hold; then the other descriptors have their turn.
    for (int i = 0; i < 64; ++i) {
        const auto space = session.reader.space();
        const ssize_t count = ::read(child.frames(), space.data(), space.size());
        session.areFramesOver = count == 0;
        if (count <= 0) return true;
        session.lastByte = systemClock().now();
        auto event = session.reader.take(static_cast<std::size_t>(count));
        session.isMidMessage = session.reader.isMidMessage();
        if (!event) {
            session.error = event.error().message;
            return false;
        }
        if (!*event) continue;
        if ((*event)->frame) {
            takePicture((*event)->frame, child, session);
        } else {
            // The same phone turned its screen; otherwise it may be another phone from here on.
            const bool isTurned = session.form && isTurnedFrom(*session.form, (*event)->form);
            if (!isTurned && session.hasPicture) endPicture(kNotMirroring);
            session.form = (*event)->form;
            session.hasPicture = false;
        }
    }
    return true;
}

void PipeAirPlayReceiver::takePicture(const PixelBuffer& frame, const ReceiverChild& child,
                                      Session& session) {
    if (!std::exchange(session.hasPicture, true)) beginPicture(*session.form, child.pid());
    session.everHadPicture = true;
    session.looksWithoutConnection = 0;
    deliver(frame);
}

// What time alone tells. False when the program is stuck.
bool PipeAirPlayReceiver::look(const ReceiverChild& child, Session& session) {
    const TimePoint now = systemClock().now();
    if (now < session.nextLook) return true;
    session.nextLook = now + kBetweenLooks;
    if (session.isMidMessage && now - session.lastByte > options_.longestPause) {
        session.error = "the AirPlay receiver got stuck in the middle of a frame";
        setState(State::stalled, session.error);
        return false;
    }
    if (!session.hasPicture) {
        const bool isOn = session.words.hasSpoken() || now - session.start >= kStartTime;
        if (isOn) setState(State::waiting);
        return true;
    }
    // A picture that stands still brings no frames either; only the connection tells.
    const bool isConnected = options_.isConnected(child.pid());
    session.looksWithoutConnection = isConnected ? 0 : session.looksWithoutConnection + 1;
    if (session.looksWithoutConnection < kLooksWithoutConnection) return true;
    session.hasPicture = false;
    endPicture(kNotMirroring);
    setState(State::waiting);
    return true;
}

// A new window, or the one there is with its new sides.
void PipeAirPlayReceiver::beginPicture(const RawVideoForm& form, pid_t pid) {
    {
        MutexLock lock(mutex_);
        status_.state = State::mirroring;
        status_.error.clear();
        if (window_) {
            window_->frame = {0, 0, double(form.width), double(form.height)};
            return;
        }
        sessions_ = (sessions_ + 1) & kMostIds;
        window_ = WinInfo{.id = kFirstId | sessions_,
                          .owner = "AirPlay receiver (Tandrel)",
                          .pid = pid,
                          .title = options_.name,
                          .frame = {0, 0, double(form.width), double(form.height)},
                          .onScreen = true,
                          .isBare = true};
    }
    log("airplay: an iPhone mirrors its screen to " + options_.name);
}

void PipeAirPlayReceiver::deliver(const PixelBuffer& frame) {
    MutexLock lock(streamsMutex_);
    newest_ = frame;
    for (const auto& [stream, events] : streams_) events.frame(frame);
}

void PipeAirPlayReceiver::endPicture(const std::string& why) {
    {
        MutexLock lock(mutex_);
        window_.reset();
    }
    MutexLock lock(streamsMutex_);
    newest_ = {};
    for (const auto& [stream, events] : streams_) events.ended(why);
    streams_.clear();
}

Result<std::vector<WinInfo>> PipeAirPlayReceiver::all() {
    MutexLock lock(mutex_);
    if (!window_) return std::vector<WinInfo>();
    return std::vector{*window_};
}

Result<std::unique_ptr<WindowStream>> PipeAirPlayReceiver::open(std::uint32_t id,
                                                                WindowEvents events) {
    MutexLock streams(streamsMutex_);
    {
        MutexLock lock(mutex_);
        if (!window_ || window_->id != id) return std::unexpected(windowIsGone(id));
    }
    auto stream = std::make_unique<Stream>(*this);
    if (newest_) events.frame(newest_);
    streams_.emplace(stream.get(), std::move(events));
    return stream;
}

}  // namespace tandrel
