#pragma once

#include <string>
#include <string_view>

#include "helper/calls.h"
#include "helper/line_reader.h"

namespace tandrel {

// One side of the conversation with an app: takes its messages, one line each, and answers.
class McpServer {
 public:
    // `writer` outlives this; `version` is of this program.
    McpServer(LineWriter& writer, std::string version, CallTimes times = {});

    // One line as it came. Returns soon: calls of tools are answered later. One thread.
    void receive(LineReader::Kind kind, std::string_view line);

    // The app has closed its side: what is under way ends. It is answered when this object goes.
    void stop() { calls_.stop(); }

 private:
    void receiveBatch(Json messages);
    void receiveOne(Json value, const Answer& answer);
    void notice(const Message& notification);
    RpcResult<void> request(const Message& message, const Answer& answer);
    RpcResult<Json> initialize(const Json& params);
    RpcResult<Json> listTools(const Json& params, Era era) const;
    RpcResult<void> callTool(const Message& message, Era era, const Answer& answer);

    LineWriter& writer_;
    const std::string version_;
    std::string negotiated_;  // the handshake's version; empty before one
    Calls calls_;
};

}  // namespace tandrel
