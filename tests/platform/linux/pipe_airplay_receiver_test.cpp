#include "platform/linux/pipe_airplay_receiver.h"

#include <atomic>
#include <fstream>

#include <gtest/gtest.h>

#include "base/file.h"
#include "image/gdp_writer.h"
#include "platform/linux/loopback_pair.h"
#include "platform/linux/window_watch.h"
#include "support/eventually.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using State = ReceiverStatus::State;

constexpr std::uint32_t kGrey = 0x828282;  // of brightness 128

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A program in the receiver's place: a script that writes a file of ours into its descriptor 3.
class Receiver : public testing::Test {
 protected:
    // `words` is the script; "$F/name" is what `put` wrote, and "await name" waits until
    // it was.
    void play(const std::string& words) {
        const auto script = folder.path() / "receiver";
        ASSERT_TRUE(
            replaceFile(script, "#!/bin/sh\nF=" + folder.path().string() +
                                    "\necho started >>$F/starts\n"
                                    "await() { while [ ! -e $F/$1 ]; do sleep 0.01; done; }\n" +
                                    words + "\n"));
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        receiver = std::make_unique<PipeAirPlayReceiver>(PipeAirPlayReceiver::Options{
            .program = program.empty() ? script.string() : program,
            .name = "Desk",
            .longestPause = std::chrono::milliseconds(200),
            .shortestBackOff = std::chrono::milliseconds(20),
            .longestBackOff = std::chrono::milliseconds(100),
            .isConnected = [this](pid_t) { return connected.load(); }});
        receiver->start();
    }
    void put(const std::string& name, const Bytes& bytes) {
        ASSERT_TRUE(replaceFile(folder.path() / name, toText(bytes)));
    }
    bool awaitState(State state) {
        return eventually([&] { return receiver->status().state == state; });
    }
    // The window, once there is one.
    std::optional<WinInfo> awaitWindow(std::uint32_t otherThan = 0) {
        std::optional<WinInfo> found;
        eventually([&] {
            const auto all = *receiver->all();
            if (all.empty() || all.front().id == otherThan) return false;
            found = all.front();
            return true;
        });
        return found;
    }
    std::ptrdiff_t starts() const {
        const auto text = readFile(folder.path() / "starts", 100'000).value_or("");
        return std::ranges::count(text, '\n');
    }

    TemporaryFolder folder;
    std::string program;
    std::atomic<bool> connected{true};
    std::unique_ptr<PipeAirPlayReceiver> receiver;
};

TEST_F(Receiver, ItsPictureIsAWindowAndFollowsThePhonesTurning) {
    put("upright", joined({gdp::caps(498, 1080), gdp::frame(498, 1080)}));
    put("turned", joined({gdp::caps(1080, 498), gdp::frame(1080, 498)}));
    play(
        "echo ready; cat $F/upright >&3; await turn; "
        "cat $F/turned >&3; exec sleep 1000");
    const auto window = awaitWindow();
    ASSERT_TRUE(window);
    EXPECT_EQ(window->title, "Desk");
    EXPECT_TRUE(window->isBare);
    EXPECT_EQ(receiver->status().state, State::mirroring);
    EXPECT_EQ(receiver->isOn(), true);
    WindowWatch watch;
    const auto stream = receiver->open(window->id, watch.events());
    ASSERT_TRUE(stream);
    EXPECT_TRUE(watch.awaitFrame(498, 1080, kGrey));
    put("turn", {});
    EXPECT_TRUE(watch.awaitFrame(1080, 498, kGrey));
    EXPECT_EQ(receiver->all()->front().id, window->id);
    EXPECT_EQ(receiver->all()->front().frame.width, 1080);
}

TEST_F(Receiver, OnButNotMirroringIsAStateOfItsOwn) {
    for (const char* words : {"echo Initialized; exec sleep 1000", "exec sleep 1000"}) {
        play(words);
        EXPECT_TRUE(awaitState(State::waiting)) << words;
        EXPECT_TRUE(receiver->all()->empty());
        EXPECT_EQ(receiver->open(0xf0000001, {}).error().message, "window 4026531841 is gone");
    }
}

TEST_F(Receiver, APhoneThatLeavesEndsTheWindowAndTheNextOneIsAnother) {
    put("one", joined({gdp::caps(498, 1080), gdp::frame(498, 1080)}));
    play(
        "echo ready; cat $F/one >&3; await next; cat $F/one >&3; "
        "exec sleep 1000");
    const auto window = awaitWindow();
    ASSERT_TRUE(window);
    WindowWatch watch;
    const auto stream = receiver->open(window->id, watch.events());
    connected = false;
    EXPECT_EQ(watch.awaitEnd(), "the iPhone stopped mirroring its screen");
    EXPECT_TRUE(awaitState(State::waiting));
    connected = true;
    put("next", {});
    EXPECT_TRUE(awaitWindow(window->id)) << "it may be another phone";
}

TEST_F(Receiver, ANewStreamOfTheSameFormIsAnotherPhones) {
    put("two", joined({gdp::caps(498, 1080), gdp::frame(498, 1080), gdp::caps(498, 1080)}));
    put("rest", gdp::frame(498, 1080));
    play(
        "cat $F/two >&3; await next; cat $F/rest >&3; exec sleep "
        "1000");
    put("next", {});
    EXPECT_TRUE(eventually([&] {
        const auto all = *receiver->all();
        return !all.empty() && all.front().id == 0xf0000002;
    }));
}

TEST_F(Receiver, WhatEndsIsStartedAgainAndItsLastErrorIsTold) {
    play("echo hello; echo '*** ERROR: no network'; echo Stopping...; exit 1");
    EXPECT_TRUE(eventually([&] { return starts() >= 3; }));
    EXPECT_TRUE(awaitState(State::failed));
    EXPECT_EQ(receiver->status().error, "the AirPlay receiver ended: *** ERROR: no network");
}

TEST_F(Receiver, AMissingProgramOrPartIsSaidWithTheCommandThatHelps) {
    const std::string install =
        "sudo apt install uxplay avahi-daemon gstreamer1.0-plugins-base gstreamer1.0-plugins-good "
        "gstreamer1.0-plugins-bad gstreamer1.0-libav";
    program = "no-such-receiver";
    play("");
    EXPECT_TRUE(awaitState(State::missing));
    EXPECT_EQ(receiver->status().error, "AirPlay needs the program no-such-receiver: " + install);
    receiver.reset();
    program.clear();
    const std::string lacks = "the AirPlay receiver lacks a part (";
    // What the real program says, and how it ends.
    const struct {
        const char* words;
        std::string error;
    } rows[] = {
        {"echo \"Required gstreamer plugin 'libav' not found\"; "
         "echo \"Missing plugin is contained in  '[GStreamer 1.x]-libav'\"; echo stopping; exit 1",
         lacks + "Required gstreamer plugin 'libav' not found): " + install},
        {"echo; echo '** (uxplay:15124): ERROR **: 15:27:26.055: get_parse_launch error (video) "
         ":'; "
         "echo ' no element \"gdppay\"'; kill -TRAP $$",
         lacks + "no element \"gdppay\"): " + install},
        {"echo 'No DNS-SD Server found (DNSServiceRegister call returned "
         "kDNSServiceErr_Unknown)'; exit 0",
         "iPhones cannot find the AirPlay receiver, since no avahi-daemon runs on this computer "
         "(No DNS-SD Server found (DNSServiceRegister call returned kDNSServiceErr_Unknown)): sudo "
         "apt install avahi-daemon && sudo systemctl start avahi-daemon"},
    };
    for (const auto& row : rows) {
        play(row.words);
        EXPECT_TRUE(awaitState(State::missing)) << row.words;
        EXPECT_EQ(receiver->status().error, row.error);
        receiver.reset();
    }
}

TEST_F(Receiver, BrokenStreamsAreToldAndStartedAgain) {
    const Bytes frame = gdp::frame(498, 1080);
    const struct {
        const char* name;
        Bytes stream;
        const char* error;
    } rows[] = {
        {"nonsense", Bytes(500, 0x37), "what the receiver sends is no stream of frames"},
        {"huge", gdp::caps(100'000, 100'000), "the receiver sends frames of no usable size"},
        {"half a frame", joined({gdp::caps(498, 1080), {frame.begin(), frame.begin() + 1000}}),
         "the AirPlay receiver got stuck in the middle of a frame"},
        {"half a head",
         {frame.begin(), frame.begin() + 30},
         "the AirPlay receiver got stuck in the middle of a frame"},
    };
    for (const auto& row : rows) {
        put("bad", row.stream);
        play("cat $F/bad >&3; exec sleep 1000");
        const auto before = starts();
        EXPECT_TRUE(eventually([&] { return receiver->status().error == row.error; })) << row.name;
        EXPECT_TRUE(eventually([&] { return starts() > before; })) << row.name;
        receiver.reset();
    }
}

TEST_F(Receiver, DeathInMidFrameEndsTheWindow) {
    const Bytes frame = gdp::frame(498, 1080);
    put("cut", joined({gdp::caps(498, 1080), frame, {frame.begin(), frame.begin() + 5000}}));
    play("cat $F/cut >&3; await die");
    const auto window = awaitWindow();
    ASSERT_TRUE(window);
    WindowWatch watch;
    const auto stream = receiver->open(window->id, watch.events());
    ASSERT_TRUE(stream);
    put("die", {});
    EXPECT_EQ(watch.awaitEnd(), "the iPhone stopped mirroring its screen");
}

TEST_F(Receiver, StopEndsTheProgramAndAllItStarted) {
    play("echo ready; echo $$ >$F/pid; sleep 1000 & wait");
    EXPECT_TRUE(awaitState(State::waiting));
    ASSERT_TRUE(
        eventually([&] { return readFile(folder.path() / "pid", 100).value_or("") != ""; }));
    const pid_t pid = std::stoi(*readFile(folder.path() / "pid", 100));
    receiver->stop();
    EXPECT_EQ(receiver->status().state, State::off);
    EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(pid)));
    receiver->start();
    EXPECT_TRUE(awaitState(State::waiting)) << "it can be started again";
}

TEST(ReceiverConnection, IsThatOfTheProcess) {
    EXPECT_FALSE(hasTcpConnection(::getpid()));
    const LoopbackPair pair;
    EXPECT_TRUE(hasTcpConnection(::getpid()));
    EXPECT_TRUE(hasTcpConnection(1'000'000'000)) << "unknown counts as yes";
}

}  // namespace
}  // namespace tandrel
