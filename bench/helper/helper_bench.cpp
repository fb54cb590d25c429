#include <array>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/json.h"
#include "http/client.h"
#include "http/server.h"

namespace tandrel::bench {
namespace {

// A JPEG of a photograph in the largest size that is delivered.
constexpr std::size_t kPictureBytes = 400'000;

std::string look() {
    Json lines = Json::array();
    for (int i = 0; i < 60; ++i) {
        lines.push_back({{"text", "A line of text on the screen"},
                         {"conf", 0.9},
                         {"x", 40},
                         {"y", 20 * i},
                         {"w", 300},
                         {"h", 18}});
    }
    return dumpJson({{"image", std::string(kPictureBytes / 3 * 4, 'A')},
                     {"mimeType", "image/png"},
                     {"lines", lines},
                     {"frameAge", 0.1},
                     {"X-Device", "PHONE-A"},
                     {"X-Image-Width", 723},
                     {"X-Image-Height", 1568}});
}

// An engine that takes no time of its own.
HTTPServer& engine() {
    static const std::map<std::string, Bytes> replies = {
        {"/home", toBytes(R"({"device":"PHONE-A","ok":true})")},
        {"/look", toBytes(look())},
    };
    static HTTPServer server(0, [](const HTTPRequest& request) {
        HTTPResponse response;
        response.body = replies.at(request.path);
        return response;
    });
    static const bool isStarted = server.start().has_value();
    if (!isStarted) std::abort();
    return server;
}

// The helper as an app starts it.
class Helper {
 public:
    Helper() {
        std::array<int, 2> input{};
        std::array<int, 2> output{};
        if (::pipe2(input.data(), O_CLOEXEC) != 0 || ::pipe2(output.data(), O_CLOEXEC) != 0) {
            std::abort();
        }
        std::string program = TANDREL_BIN_DIR "/tandrel";
        std::string mode = "mcp";
        std::string port = "TANDREL_ENGINE_PORT=" + std::to_string(engine().port());
        std::array<char*, 3> words = {program.data(), mode.data(), nullptr};
        std::array<char*, 2> settings = {port.data(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        if (::posix_spawn(&pid_, program.c_str(), &actions, nullptr, words.data(),
                          settings.data()) != 0) {
            std::abort();
        }
        posix_spawn_file_actions_destroy(&actions);
        ::close(input[0]);
        ::close(output[1]);
        to_ = input[1];
        from_ = output[0];
    }
    ~Helper() {
        ::close(to_);
        ::waitpid(pid_, nullptr, 0);
        ::close(from_);
    }
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    // Sends one line and reads until the end of the next; how many bytes that was.
    std::size_t exchange(const std::string& line) {
        if (::write(to_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            std::abort();
        }
        std::size_t total = 0;
        while (true) {
            const ssize_t count = ::read(from_, buffer_.data(), buffer_.size());
            if (count <= 0) std::abort();
            total += static_cast<std::size_t>(count);
            if (buffer_[static_cast<std::size_t>(count) - 1] == '\n') return total;
        }
    }

 private:
    pid_t pid_ = -1;
    int to_ = -1;
    int from_ = -1;
    std::string buffer_ = std::string(1 << 20, '\0');
};

const std::string kInitialize =
    R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2025-11-25"}})"
    "\n";

std::string call(const char* tool) {
    return R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":")" +
           std::string(tool) + "\"}}\n";
}

void startToFirstAnswer(benchmark::State& state) {
    for (auto _ : state) {
        std::optional<Helper> helper(std::in_place);
        benchmark::DoNotOptimize(helper->exchange(kInitialize));
        state.PauseTiming();
        helper.reset();
        state.ResumeTiming();
    }
}

void throughTheHelper(benchmark::State& state, const char* tool) {
    Helper helper;
    const std::string line = call(tool);
    for (auto _ : state) benchmark::DoNotOptimize(helper.exchange(line));
}

void plainHome(benchmark::State& state) {
    const auto url = LoopbackUrl::ofPort(engine().port());
    for (auto _ : state) benchmark::DoNotOptimize(httpPost(url, "/home", Json::object()));
}

void plainLook(benchmark::State& state) {
    const auto url = LoopbackUrl::ofPort(engine().port());
    for (auto _ : state) benchmark::DoNotOptimize(httpGet(url, "/look?format=png&maxEdge=1568"));
}

// The cost of the helper is the difference between a call and the plain request beside it.
BENCHMARK(startToFirstAnswer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(plainHome)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(throughTheHelper, home, "iphone_go_home")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(plainLook)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(throughTheHelper, look, "iphone_look")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace tandrel::bench
