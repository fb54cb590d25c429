#include "helper/json_rpc.h"

namespace tandrel {
namespace {

bool isId(const Json& value) { return value.is_string() || value.is_number_integer(); }

std::unexpected<BadMessage> bad(const Json& id, std::string message, int code = kInvalidRequest) {
    return std::unexpected(BadMessage{id, RpcError{code, std::move(message)}});
}

}  // namespace

std::expected<Message, BadMessage> readMessage(Json value) {
    if (!value.is_object()) return bad(nullptr, "Invalid Request: a message is a JSON object");
    const bool hasId = value.contains("id");
    const Json id = hasId && isId(value["id"]) ? value["id"] : Json(nullptr);
    if (hasId && id.is_null()) {
        return bad(nullptr, "Invalid Request: \"id\" must be text or a whole number");
    }
    if (textMember(value, "jsonrpc") != "2.0") {
        return bad(id, "Invalid Request: \"jsonrpc\" must be \"2.0\"");
    }
    if (!value.contains("method") && (value.contains("result") || value.contains("error"))) {
        return Message{.kind = Message::Kind::response, .id = id};
    }
    auto method = textMember(value, "method");
    if (!method) return bad(id, "Invalid Request: \"method\" must be text");
    Message message{.kind = hasId ? Message::Kind::request : Message::Kind::notification,
                    .id = id,
                    .method = *std::move(method)};
    const auto params = value.find("params");
    if (params == value.end() || params->is_null()) return message;
    if (params->is_object()) {
        message.params = std::move(*params);
    } else if (hasId) {
        return bad(id, "Invalid params: \"params\" must be an object", kInvalidParams);
    }
    return message;
}

Json resultReply(const Json& id, Json result) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}};
}

Json errorReply(const Json& id, const RpcError& error) {
    Json object = {{"code", error.code}, {"message", error.message}};
    if (!error.data.is_null()) object["data"] = error.data;
    return {{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(object)}};
}

Json notificationOf(std::string_view method, Json params) {
    return {{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}};
}

}  // namespace tandrel
