#include "helper/mcp_server.h"

#include <memory>

#include <fmt/format.h>

namespace tandrel {
namespace {

constexpr std::size_t kMostInBatch = 64;

// Gathers the answers to the messages of one array into one array.
class Batch {
 public:
    Batch(LineWriter& writer, std::size_t count) : writer_(writer), missing_(count) {}

    void add(std::optional<Json> reply) {
        if (const Json replies = addAndTake(std::move(reply)); !replies.empty()) {
            writer_.write(replies);
        }
    }

 private:
    // All of them once none is missing, before that none.
    Json addAndTake(std::optional<Json> reply) {
        MutexLock lock(mutex_);
        if (reply) replies_.push_back(*std::move(reply));
        return --missing_ == 0 ? std::move(replies_) : Json::array();
    }

    LineWriter& writer_;
    Mutex mutex_;
    std::size_t missing_ OWNED_BY(mutex_);
    Json replies_ OWNED_BY(mutex_) = Json::array();
};

std::unexpected<RpcError> invalidParams(std::string message) {
    return std::unexpected(RpcError{kInvalidParams, "Invalid params: " + std::move(message)});
}

Json progressTokenIn(const Json& params) {
    const auto meta = params.find("_meta");
    if (meta == params.end() || !meta->is_object()) return nullptr;
    const auto token = meta->find("progressToken");
    if (token == meta->end() || !(token->is_string() || token->is_number_integer())) return nullptr;
    return *token;
}

}  // namespace

McpServer::McpServer(LineWriter& writer, std::string version, CallTimes times)
    : writer_(writer), version_(std::move(version)), calls_(writer, version_, times) {}

void McpServer::receive(LineReader::Kind kind, std::string_view line) {
    if (kind == LineReader::Kind::tooLong) {
        writer_.write(errorReply(
            nullptr,
            {kInvalidRequest, fmt::format("Invalid Request: a message has at most {} bytes",
                                          LineReader::kLongestLine)}));
        return;
    }
    auto value = parseJson(line);
    if (!value) {
        writer_.write(errorReply(nullptr, {kParseError, "Parse error: " + value.error().message}));
    } else if (value->is_array()) {
        receiveBatch(*std::move(value));
    } else {
        receiveOne(*std::move(value), [this](const std::optional<Json>& reply) {
            if (reply) writer_.write(*reply);
        });
    }
}

void McpServer::receiveBatch(Json messages) {
    const auto refuse = [this](std::string message) {
        writer_.write(errorReply(nullptr, {kInvalidRequest, std::move(message)}));
    };
    if (negotiated_ != kBatchVersion) {
        return refuse(
            fmt::format("Invalid Request: several messages in one array are part of "
                        "version {} only",
                        kBatchVersion));
    }
    if (messages.empty() || messages.size() > kMostInBatch) {
        return refuse(
            fmt::format("Invalid Request: an array holds 1 to {} messages", kMostInBatch));
    }
    const auto batch = std::make_shared<Batch>(writer_, messages.size());
    for (Json& message : messages) {
        receiveOne(std::move(message),
                   [batch](std::optional<Json> reply) { batch->add(std::move(reply)); });
    }
}

void McpServer::receiveOne(Json value, const Answer& answer) {
    const auto message = readMessage(std::move(value));
    if (!message) return answer(errorReply(message.error().id, message.error().error));
    if (message->kind != Message::Kind::request) {
        if (message->kind == Message::Kind::notification) notice(*message);
        return answer(std::nullopt);
    }
    if (const auto done = request(*message, answer); !done) {
        answer(errorReply(message->id, done.error()));
    }
}

void McpServer::notice(const Message& notification) {
    if (notification.method != "notifications/cancelled") return;
    const auto id = notification.params.find("requestId");
    if (id != notification.params.end()) calls_.cancel(*id);
}

RpcResult<void> McpServer::request(const Message& message, const Answer& answer) {
    const auto era = eraOf(message.params);
    if (!era) return std::unexpected(era.error());
    if (message.method == "tools/call") return callTool(message, *era, answer);
    RpcResult<Json> result = std::unexpected(
        RpcError{kMethodNotFound, fmt::format("Method not found: {}", excerpt(message.method))});
    if (message.method == "tools/list") result = listTools(message.params, *era);
    if (*era == Era::handshake) {
        if (message.method == "initialize") result = initialize(message.params);
        if (message.method == "ping") result = Json::object();
    } else if (message.method == "server/discover") {
        result = discoverResult();
        makeCacheable(*result, *era);
    }
    if (!result) return std::unexpected(result.error());
    complete(*result, *era, version_);
    answer(resultReply(message.id, *std::move(result)));
    return {};
}

RpcResult<Json> McpServer::initialize(const Json& params) {
    const auto asked = textMember(params, "protocolVersion");
    if (!asked) return invalidParams("\"protocolVersion\" must be text");
    negotiated_ = handshakeVersion(*asked);
    return initializeResult(negotiated_, version_);
}

RpcResult<Json> McpServer::listTools(const Json& params, Era era) const {
    if (params.contains("cursor") && !params["cursor"].is_null()) {
        return invalidParams("the list of tools has one page, so no cursor is valid");
    }
    Json list = Json::array();
    for (const Tool& tool : tools()) list.push_back(toolJson(tool));
    Json result = {{"tools", std::move(list)}};
    makeCacheable(result, era);
    return result;
}

RpcResult<void> McpServer::callTool(const Message& message, Era era, const Answer& answer) {
    const auto name = textMember(message.params, "name");
    if (!name) return invalidParams("\"name\" must be the name of a tool");
    const Tool* tool = findTool(*name);
    if (tool == nullptr) {
        return std::unexpected(
            RpcError{kInvalidParams, fmt::format("Unknown tool: {}", excerpt(*name))});
    }
    const auto given = message.params.find("arguments");
    Json arguments = given == message.params.end() || given->is_null() ? Json::object() : *given;
    if (!arguments.is_object()) return invalidParams("\"arguments\" must be an object");
    return calls_.start({.id = message.id,
                         .era = era,
                         .tool = tool,
                         .arguments = std::move(arguments),
                         .progressToken = progressTokenIn(message.params)},
                        answer);
}

}  // namespace tandrel
