#pragma once

#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <sys/types.h>

#include "helper/tool.h"

namespace tandrel {

// The app's side of a conversation with the helper over two pipes.
class AppSide {
 public:
    using Environment = std::map<std::string, std::string>;

    // With the helper on a thread of this process.
    explicit AppSide(CallTimes times = {});
    // With the real program, which sees exactly this environment.
    explicit AppSide(const Environment& environment);
    ~AppSide();
    AppSide(const AppSide&) = delete;
    AppSide& operator=(const AppSide&) = delete;

    void send(const Json& message);
    void sendText(std::string_view bytes);
    // Closes the side that the helper reads.
    void endInput();
    // Closes the side that the helper writes.
    void endOutput();
    // Blocks until the real program has ended; its exit status, or minus the signal that ended it.
    int wait();

    // The next message; null at the end. Blocks.
    Json receive();
    // What is left until the helper ends.
    std::vector<Json> receiveRest();

    // Calls a tool and returns its result, leaving other messages aside.
    Json call(std::string_view tool, const Json& arguments = Json::object());
    // The same, the text of the result's only or first block. Fails the test when the tool refused,
    // and when it did not.
    std::string done(std::string_view tool, const Json& arguments = Json::object());
    std::string refused(std::string_view tool, const Json& arguments = Json::object());

 private:
    struct HelpersEnds {
        int input;
        int output;
    };
    HelpersEnds openPipes();

    int toHelper_ = -1;
    int fromHelper_ = -1;
    std::string received_;
    int nextId_ = 1000;
    std::jthread helper_;
    pid_t program_ = -1;
};

// A request in the older generation.
Json request(const Json& id, std::string_view method, const Json& params = Json::object());
Json callRequest(const Json& id, std::string_view tool, const Json& arguments = Json::object());
// The app no longer wants the answer to that request.
Json cancelled(const Json& id);

}  // namespace tandrel
