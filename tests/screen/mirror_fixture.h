#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "base/file.h"
#include "image/pictures.h"
#include "screen/fake_capture_devices.h"
#include "screen/fake_windows.h"
#include "screen/mirror_command.h"
#include "screen/size_reader.h"
#include "screen/snapshot.h"
#include "support/manual_clock.h"
#include "support/temporary_folder.h"

namespace tandrel {

// The command-line tools with windows, cables and a desktop that the test makes up.
class MirrorFixture : public testing::Test {
 protected:
    class Granted final : public Permissions {
     public:
        Permission bluetooth() override { return Permission::granted; }
        Permission camera() override { return cameraAnswer; }
        Permission screenRecording() override { return Permission::granted; }
        Permission cameraAnswer = Permission::granted;
    };
    // Writes down what it is told to do.
    class NotedInput final : public SyntheticInput {
     public:
        explicit NotedInput(std::vector<std::string>& notes) : notes_(notes) {}
        Result<void> click(DesktopPoint at) override { return note("click " + text(at)); }
        Result<void> drag(DesktopPoint from, DesktopPoint to, Duration duration) override {
            return note(fmt::format("drag {} {} {}", text(from), text(to), toSeconds(duration)));
        }
        Result<void> type(std::string_view text) override {
            return note(fmt::format("type {}", text));
        }
        Result<void> key(std::string_view key, const std::vector<std::string>& modifiers) override {
            return note(fmt::format("key {} {}", key, fmt::join(modifiers, " ")));
        }
        Result<void> activate(std::uint32_t window) override {
            return note("activate " + std::to_string(window));
        }

     private:
        static std::string text(DesktopPoint at) { return fmt::format("{},{}", at.x, at.y); }
        Result<void> note(const std::string& line) {
            notes_.push_back(line);
            return {};
        }
        std::vector<std::string>& notes_;
    };

    int run(const MirrorArgs& args) {
        out.str("");
        err.str("");
        return mirrorCommand(args, services).value_or(-1);
    }
    Json result() { return parseJson(out.str()).value_or(Json()); }
    // The one line that a failing tool prints.
    std::string failure(const MirrorArgs& args) {
        EXPECT_EQ(run(args), 1);
        EXPECT_EQ(out.str(), "");
        std::string line = err.str();
        EXPECT_TRUE(line.ends_with('\n'));
        line.pop_back();
        return line;
    }
    std::string file(const std::string& name) { return (folder.path() / name).string(); }
    std::string saved(const PixelBuffer& picture) {
        EXPECT_TRUE(replaceFile(file("saved.png"), toText(*encodeSnapshot(picture, {}))));
        return file("saved.png");
    }

    TemporaryFolder folder;
    ManualClock clock{ManualClock::Sleep::passes};
    FakeCaptureDevices devices;
    FakeWindows windows;
    Granted permissions;
    std::vector<std::string> notes;
    std::stop_source stopping;
    std::ostringstream out;
    std::ostringstream err;
    MirrorServices services{.out = out,
                            .err = err,
                            .makeRecognizer = [] { return std::make_unique<SizeReader>(); },
                            .openPlatform =
                                [this] {
                                    return MirrorPlatform{.capture = devices,
                                                          .windows = windows,
                                                          .receiver = nullptr,
                                                          .permissions = permissions,
                                                          .peers = nullptr,
                                                          .clock = clock,
                                                          .stopping = stopping.get_token(),
                                                          .version = "1.2"};
                                },
                            .openInput = [this]() -> Result<std::unique_ptr<SyntheticInput>> {
                                return std::make_unique<NotedInput>(notes);
                            }};
};

}  // namespace tandrel
