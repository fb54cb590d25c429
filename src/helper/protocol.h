#pragma once

#include <array>
#include <string_view>

#include "helper/json_rpc.h"

// The Model Context Protocol's versions, and what each adds to a message. Its older generation
// opens with a handshake ("initialize"); the newer one (2026-07-28) has none: each request carries
// the version it is in. Both are served by one process, side by side.
namespace tandrel {

enum class Era { handshake, stateless };

inline constexpr std::string_view kStatelessVersion = "2026-07-28";
// Newest first.
inline constexpr std::array<std::string_view, 4> kHandshakeVersions = {"2025-11-25", "2025-06-18",
                                                                       "2025-03-26", "2024-11-05"};
// The only version in which several messages may come in one array.
inline constexpr std::string_view kBatchVersion = "2025-03-26";

inline constexpr int kUnsupportedVersion = -32022;

// The generation that a request belongs to, by its metadata. The error is for a request of the
// newer one that lacks what each of those must carry, or is in a version that is not served.
RpcResult<Era> eraOf(const Json& params);

// The version to answer a handshake with: the one asked for, or else the newest.
std::string_view handshakeVersion(std::string_view asked);

// Results. `version` is of this program.
Json initializeResult(std::string_view protocolVersion, std::string_view version);
Json discoverResult();

// Adds what the newer generation wants to see in every result.
void complete(Json& result, Era era, std::string_view version);
// What it wants to see in a result that may be kept and used again.
void makeCacheable(Json& result, Era era);

}  // namespace tandrel
