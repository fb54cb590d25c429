#pragma once

#include <expected>
#include <string>

#include "base/json.h"

// JSON-RPC 2.0 messages.
namespace tandrel {

inline constexpr int kParseError = -32700;
inline constexpr int kInvalidRequest = -32600;
inline constexpr int kMethodNotFound = -32601;
inline constexpr int kInvalidParams = -32602;

// A fault of the protocol, not of what a tool was asked to do.
struct RpcError {
    int code = kInvalidRequest;
    std::string message;
    Json data = nullptr;  // left out when null
};

template <typename T>
using RpcResult = std::expected<T, RpcError>;

struct Message {
    enum class Kind { request, notification, response };
    Kind kind = Kind::request;
    Json id = nullptr;  // text or an integer; null for a notification
    std::string method = {};
    Json params = Json::object();
};

struct BadMessage {
    Json id = nullptr;  // to answer under; null when it cannot be told
    RpcError error;
};

// Takes one message apart.
std::expected<Message, BadMessage> readMessage(Json value);

Json resultReply(const Json& id, Json result);
Json errorReply(const Json& id, const RpcError& error);
Json notificationOf(std::string_view method, Json params);

}  // namespace tandrel
