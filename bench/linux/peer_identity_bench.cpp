#include <benchmark/benchmark.h>

#include <sys/socket.h>

#include "../tests/platform/linux/loopback_pair.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/sock_diag_peer_identity.h"

namespace tandrel {
namespace {
}
}
