#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <microhttpd.h>
#include <netinet/in.h>

#include "http/client.h"
#include "http/server.h"
#include "load.h"

namespace tandrel::bench {
namespace {

// As long as a status reply with two phones.
std::string statusText() {
    Json devices = Json::array();
    for (int i = 0; i < 2; ++i) {
        devices.push_back({{"id", "00008110-000A2D8E3C41801" + std::to_string(i)},
                           {"note", std::string(450, 'x')}});
    }
    return dumpJson({{"app", "Tandrel"}, {"bluetooth", "connected"}, {"devices", devices}});
}

const std::string& status() {
    static const std::string text = statusText();
    return text;
}

// The same static reply from libmicrohttpd, in the mode it recommends for one request a connection.
class MicroServer {
 public:
    explicit MicroServer(unsigned threads) {
        const unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD;
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        daemon_ = threads > 1
                      ? MHD_start_daemon(flags, 0, nullptr, nullptr, &reply, nullptr,
                                         MHD_OPTION_SOCK_ADDR, &address,
                                         MHD_OPTION_THREAD_POOL_SIZE, threads, MHD_OPTION_END)
                      : MHD_start_daemon(flags, 0, nullptr, nullptr, &reply, nullptr,
                                         MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_END);
        if (daemon_ == nullptr) std::abort();
    }
    ~MicroServer() { MHD_stop_daemon(daemon_); }
    std::uint16_t port() const {
        return MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_BIND_PORT)->port;
    }

 private:
    static MHD_Result reply(void*, MHD_Connection* connection, const char*, const char*,
                            const char*, const char*, std::size_t*, void**) {
        MHD_Response* response = MHD_create_response_from_buffer(
            status().size(), const_cast<char*>(status().data()), MHD_RESPMEM_PERSISTENT);
        MHD_add_response_header(response, "Content-Type", "application/json");
        MHD_add_response_header(response, "Connection", "close");
        const MHD_Result queued = MHD_queue_response(connection, MHD_HTTP_OK, response);
        MHD_destroy_response(response);
        return queued;
    }

    MHD_Daemon* daemon_ = nullptr;
};

std::unique_ptr<HTTPServer> started(HTTPHandler handler) {
    auto server = std::make_unique<HTTPServer>(0, std::move(handler));
    if (!server->start()) std::abort();
    return server;
}

struct Rival {
    const char* name;
    std::uint16_t port;
    std::vector<double> rates = {};  // one for each turn
    std::vector<double> microseconds = {};
    std::size_t failures = 0;
    double processorSeconds = 0;
};

// Short turns one after another, so that whatever else the machine does meets all alike.
void takeTurns(std::vector<Rival>& rivals, int clients) {
    constexpr int kTurns = 30;
    constexpr Duration kTurn = std::chrono::milliseconds(100);
    for (int turn = 0; turn < kTurns; ++turn) {
        for (Rival& rival : rivals) {
            const Load load = loadFor(rival.port, clients, kTurn, status().size());
            rival.rates.push_back(static_cast<double>(load.microseconds.size()) / load.seconds);
            rival.microseconds.insert(rival.microseconds.end(), load.microseconds.begin(),
                                      load.microseconds.end());
            rival.failures += load.failures;
            rival.processorSeconds += load.processorSeconds;
        }
    }
}

// Of the quarter of turns that other work on the machine disturbed least.
double rate(Rival& rival) { return percentile(rival.rates, 0.75); }

void report(benchmark::State& state, Rival& rival) {
    const std::string name = rival.name;
    const auto replies = static_cast<double>(rival.microseconds.size());
    state.counters[name + "_rps"] = rate(rival);
    state.counters[name + "_p50_us"] = percentile(rival.microseconds, 0.5);
    state.counters[name + "_p99_us"] = percentile(rival.microseconds, 0.99);
    state.counters[name + "_cpu_us"] = rival.processorSeconds * 1e6 / replies;
    if (rival.failures == 0) return;
    state.counters[name + "_failures"] = static_cast<double>(rival.failures);
}

void BM_StatusBesideLibmicrohttpd(benchmark::State& state) {
    const auto ours = started([](const HTTPRequest&) {
        HTTPResponse response;
        response.body = toBytes(status());
        return response;
    });
    const MicroServer one(1);
    const MicroServer pool(std::max(2u, std::thread::hardware_concurrency()));
    std::vector<Rival> rivals = {
        {"tandrel", ours->port()}, {"mhd", one.port()}, {"mhd_pool", pool.port()}};
    for (auto _ : state) takeTurns(rivals, static_cast<int>(state.range(0)));
    for (Rival& rival : rivals) report(state, rival);
    const double best = std::max(rate(rivals[1]), rate(rivals[2]));
    state.counters["ratio_to_best"] = rate(rivals[0]) / best;
}
BENCHMARK(BM_StatusBesideLibmicrohttpd)
    ->Arg(1)
    ->Arg(16)
    ->Arg(64)
    ->ArgName("clients")
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);

// The handler makes the body anew each time, as an encoder does; that time is not counted.
void BM_LargeBodyToTheLastByte(benchmark::State& state) {
    TimePoint handed;
    const auto server = started([&](const HTTPRequest&) {
        HTTPResponse response;
        response.contentType = "image/png";
        response.body = Bytes(12'000'000, 'x');
        handed = systemClock().now();
        return response;
    });
    const LoopbackUrl url = LoopbackUrl::ofPort(server->port());
    for (auto _ : state) {
        const TimePoint asked = systemClock().now();
        const auto response = httpGet(url, "/frame.png");
        const TimePoint done = systemClock().now();
        if (!response || response->body.size() != 12'000'000) state.SkipWithError("no reply");
        state.counters["request_to_last_ms"] = toSeconds(done - asked) * 1e3;
        state.SetIterationTime(toSeconds(done - handed));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * 12'000'000);
}
BENCHMARK(BM_LargeBodyToTheLastByte)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tandrel::bench
