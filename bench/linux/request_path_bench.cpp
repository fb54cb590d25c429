#include <cstdlib>
#include <filesystem>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "platform/linux/json_user_defaults.h"
#include "platform/linux/loopback_pair.h"
#include "platform/linux/sock_diag_peer_identity.h"
#include "support/temporary_folder.h"

// What every request of the API costs before its handler runs: who calls, and whether control is
// paused. The kernel's answer is to stay under 50 us.
namespace tandrel {
namespace {

void whoCallsBySockDiag(benchmark::State& state) {
    const LoopbackPair pair;
    const LoopbackConnection connection = pair.asSeenByServer();
    SockDiagPeerIdentity identity;
    for (auto _ : state) {
        const auto user = identity.userBehind(connection);
        if (!user || *user != identity.ownUser()) return state.SkipWithError("wrong user");
    }
}

void whoCallsByProcNet(benchmark::State& state) {
    const LoopbackPair pair;
    const LoopbackConnection connection = pair.asSeenByServer();
    for (auto _ : state) {
        if (askProcNet(connection).lookup != PeerLookup::found) {
            return state.SkipWithError("not found");
        }
    }
}

void isPaused(benchmark::State& state) {
    const TemporaryFolder folder;
    JsonUserDefaults defaults(folder.path() / "settings.json");
    if (!defaults.set("paused", true)) return state.SkipWithError("cannot set");
    for (auto _ : state) {
        if (defaults.boolValue("paused") != true) return state.SkipWithError("not read");
    }
}

BENCHMARK(whoCallsBySockDiag)->ThreadRange(1, 4)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(whoCallsByProcNet)->Unit(benchmark::kMicrosecond);
BENCHMARK(isPaused)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tandrel
