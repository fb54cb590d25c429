#include "platform/linux/pipe_airplay_receiver.h"

#include <atomic>

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

// A stream's beginning, a picture and so many bytes of another one.
Bytes pictures(int width, int height, std::ptrdiff_t cutOff = 0) {
    Bytes all = gdp::caps(width, height);
    const Bytes frame = gdp::frame(width, height);
    all.insert(all.end(), frame.begin(), frame.end());
    all.insert(all.end(), frame.begin(), frame.begin() + cutOff);
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
    // That it says so and is started again.
    void expectTrouble(const std::string& words, State state, const std::string& error) {
        SCOPED_TRACE(words);
        const auto before = starts();
        play(words);
        EXPECT_TRUE(eventually([&] {
            const ReceiverStatus now = receiver->status();
            return now.state == state && now.error == error;
        })) << receiver->status().error;
        EXPECT_TRUE(eventually([&] { return program != "" || starts() > before + 1; }));
        receiver.reset();
    }
    // The window, once there is one, which is watched from then on.
    WinInfo awaitWindow(std::uint32_t otherThan = 0) {
        WinInfo found;
        EXPECT_TRUE(eventually([&] {
            const auto all = *receiver->all();
            if (all.empty() || all.front().id == otherThan) return false;
            found = all.front();
            return true;
        }));
        auto opened = receiver->open(found.id, watch.events());
        EXPECT_TRUE(opened);
        if (opened) stream = *std::move(opened);
        return found;
    }
    std::ptrdiff_t starts() const {
        const auto text = readFile(folder.path() / "starts", 100'000).value_or("");
        return std::ranges::count(text, '\n');
    }

    TemporaryFolder folder;
    std::string program;
    std::atomic<bool> connected{true};
    WindowWatch watch;
    std::unique_ptr<PipeAirPlayReceiver> receiver;
    std::unique_ptr<WindowStream> stream;
};

TEST_F(Receiver, ItsPictureIsAWindowAndFollowsThePhonesTurning) {
    put("upright", pictures(498, 1080));
    put("turned", pictures(1080, 498));
    play("cat $F/upright >&3; await turn; cat $F/turned >&3; exec sleep 1000");
    const WinInfo window = awaitWindow();
    EXPECT_EQ(window.title, "Desk");
    EXPECT_TRUE(window.isBare);
    EXPECT_EQ(receiver->status().state, State::mirroring);
    EXPECT_EQ(receiver->isOn(), true);
    EXPECT_TRUE(watch.awaitFrame(498, 1080, kGrey));
    put("turn", {});
    EXPECT_TRUE(watch.awaitFrame(1080, 498, kGrey));
    EXPECT_EQ(receiver->all()->front().id, window.id);
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
    put("one", pictures(498, 1080));
    play("cat $F/one >&3; await next; cat $F/one >&3; exec sleep 1000");
    const WinInfo window = awaitWindow();
    connected = false;
    EXPECT_EQ(watch.awaitEnd(), "the iPhone stopped mirroring its screen");
    EXPECT_TRUE(awaitState(State::waiting));
    connected = true;
    put("next", {});
    awaitWindow(window.id);
}

TEST_F(Receiver, ANewStreamOfTheSameFormIsAnotherPhones) {
    put("one", pictures(498, 1080));
    play("cat $F/one >&3; await next; cat $F/one >&3; exec sleep 1000");
    const WinInfo window = awaitWindow();
    put("next", {});
    EXPECT_EQ(watch.awaitEnd(), "the iPhone stopped mirroring its screen");
    awaitWindow(window.id);
}

TEST_F(Receiver, WhatEndsOrLacksAPartIsStartedAgainAndSaidWithTheCommandThatHelps) {
    expectTrouble("echo hello; echo '*** ERROR: no network'; echo Stopping...; exit 1",
                  State::failed, "the AirPlay receiver ended: *** ERROR: no network");
    const std::string install =
        "sudo apt install uxplay avahi-daemon gstreamer1.0-plugins-base gstreamer1.0-plugins-good "
        "gstreamer1.0-plugins-bad gstreamer1.0-libav";
    const std::string lacks = "the AirPlay receiver lacks a part (";
    // What the real program says, and how it ends.
    expectTrouble(
        "echo \"Required gstreamer plugin 'libav' not found\"; "
        "echo \"Missing plugin is contained in  '[GStreamer 1.x]-libav'\"; echo stopping; exit 1",
        State::missing, lacks + "Required gstreamer plugin 'libav' not found): " + install);
    expectTrouble(
        "echo; echo '** (uxplay:15124): ERROR **: 15:27:26.055: get_parse_launch error (video) :'; "
        "echo ' no element \"gdppay\"'; kill -TRAP $$",
        State::missing, lacks + "no element \"gdppay\"): " + install);
    const std::string noServer =
        "No DNS-SD Server found (DNSServiceRegister call returned kDNSServiceErr_Unknown)";
    expectTrouble("echo '" + noServer + "'; exit 0", State::missing,
                  "iPhones cannot find the AirPlay receiver, since no avahi-daemon runs on this "
                  "computer (" +
                      noServer +
                      "): sudo apt install avahi-daemon && sudo systemctl start avahi-daemon");
    program = "no-such-receiver";
    expectTrouble("", State::missing, "AirPlay needs the program no-such-receiver: " + install);
}

TEST_F(Receiver, BrokenStreamsAreToldAndStartedAgain) {
    const Bytes frame = gdp::frame(498, 1080);
    const std::string stuck = "the AirPlay receiver got stuck in the middle of a frame";
    const std::pair<Bytes, std::string> rows[] = {
        {Bytes(500, 0x37), "what the receiver sends is no stream of frames"},
        {gdp::caps(100'000, 100'000), "the receiver sends frames of no usable size"},
        {pictures(498, 1080, 1000), stuck},
        {{frame.begin(), frame.begin() + 30}, stuck},
    };
    for (const auto& [bytes, error] : rows) {
        put("bad", bytes);
        expectTrouble("cat $F/bad >&3; exec sleep 1000", State::failed, error);
    }
}

TEST_F(Receiver, DeathInMidFrameEndsTheWindow) {
    put("cut", pictures(498, 1080, 5000));
    play("cat $F/cut >&3; await die");
    awaitWindow();
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
