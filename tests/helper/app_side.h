#pragma once

#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "helper/tool.h"

namespace tandrel {

// The app's side of a conversation with the helper, which runs in this process over two pipes.
class AppSide {
 public:
    explicit AppSide(CallTimes times = {});
    ~AppSide();
    AppSide(const AppSide&) = delete;
    AppSide& operator=(const AppSide&) = delete;

    void send(const Json& message);
    void sendText(std::string_view bytes);
    // Closes the side that the helper reads.
    void endInput();

    // The next message; null at the end. Blocks.
    Json receive();
    // What is left until the helper ends.
    std::vector<Json> receiveRest();

    // Calls a tool and returns its result, leaving other messages aside.
    Json call(std::string_view tool, const Json& arguments = Json::object());
    // The same, the text of the result's only or first block. Fails the test when the result's
    // isError is not `isError`.
    enum class Outcome { done, refused };
    std::string callForText(std::string_view tool, const Json& arguments, Outcome outcome);

 private:
    int toHelper_ = -1;
    int fromHelper_ = -1;
    std::string received_;
    int nextId_ = 1000;
    std::jthread helper_;
};

// A request in the older generation.
Json request(const Json& id, std::string_view method, const Json& params = Json::object());
Json callRequest(const Json& id, std::string_view tool, const Json& arguments = Json::object());

}  // namespace tandrel
