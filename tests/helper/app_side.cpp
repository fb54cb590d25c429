#include "helper/app_side.h"

#include <array>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "helper/conversation.h"

namespace tandrel {
namespace {

constexpr int kPatienceMilliseconds = 60'000;

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    return ends;
}

}  // namespace

AppSide::HelpersEnds AppSide::openPipes() {
    const auto input = makePipe();
    const auto output = makePipe();
    toHelper_ = input[1];
    fromHelper_ = output[0];
    return {input[0], output[1]};
}

AppSide::AppSide(CallTimes times) {
    helper_ = std::jthread([ends = openPipes(), times] {
        converse(ends.input, ends.output, "1.2.3", times);
        ::close(ends.input);
        ::close(ends.output);
    });
}

AppSide::AppSide(const Environment& environment) {
    const HelpersEnds ends = openPipes();
    std::vector<std::string> texts = {"/usr/bin/env", "-i"};
    for (const auto& [name, value] : environment) texts.push_back(name + "=" + value);
    texts.insert(texts.end(), {TANDREL_BIN_DIR "/tandrel", "mcp"});
    std::vector<char*> words;
    for (std::string& text : texts) words.push_back(text.data());
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends.input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends.output, STDOUT_FILENO);
    const int error =
        ::posix_spawn(&program_, words.front(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends.input);
    ::close(ends.output);
    if (error != 0) throw std::runtime_error("cannot start the helper");
}

AppSide::~AppSide() {
    endInput();
    if (helper_.joinable()) helper_.join();
    if (program_ > 0) wait();
    endOutput();
}

void AppSide::send(const Json& message) { sendText(message.dump() + "\n"); }

void AppSide::sendText(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(toHelper_, bytes.data(), bytes.size());
        if (count <= 0) throw std::runtime_error("the helper reads no more");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void AppSide::endInput() {
    if (toHelper_ >= 0) ::close(toHelper_);
    toHelper_ = -1;
}

void AppSide::endOutput() {
    if (fromHelper_ >= 0) ::close(fromHelper_);
    fromHelper_ = -1;
}

int AppSide::wait() {
    int status = 0;
    if (::waitpid(program_, &status, 0) != program_) throw std::runtime_error("no such program");
    program_ = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

Json AppSide::receive() {
    while (true) {
        if (const auto end = received_.find('\n'); end != std::string::npos) {
            const Json message = Json::parse(received_.substr(0, end));
            received_.erase(0, end + 1);
            return message;
        }
        pollfd ready{fromHelper_, POLLIN, 0};
        if (::poll(&ready, 1, kPatienceMilliseconds) <= 0) throw std::runtime_error("no answer");
        std::array<char, 65536> piece{};
        const ssize_t count = ::read(fromHelper_, piece.data(), piece.size());
        if (count <= 0) {
            EXPECT_EQ(received_, "") << "the last line has no end";
            return nullptr;
        }
        received_.append(piece.data(), static_cast<std::size_t>(count));
    }
}

std::vector<Json> AppSide::receiveRest() {
    std::vector<Json> messages;
    for (Json message = receive(); !message.is_null(); message = receive()) {
        messages.push_back(std::move(message));
    }
    return messages;
}

Json AppSide::call(std::string_view tool, const Json& arguments) {
    const int id = nextId_++;
    send(callRequest(id, tool, arguments));
    while (true) {
        Json message = receive();
        if (message.is_null()) throw std::runtime_error("the helper ended");
        if (message.value("id", Json()) == id) return message.at("result");
    }
}

std::string AppSide::done(std::string_view tool, const Json& arguments) {
    const Json result = call(tool, arguments);
    EXPECT_EQ(result.at("isError"), false) << result;
    return result.at("content").at(0).at("text");
}

std::string AppSide::refused(std::string_view tool, const Json& arguments) {
    const Json result = call(tool, arguments);
    EXPECT_EQ(result.at("isError"), true) << result;
    return result.at("content").at(0).at("text");
}

Json request(const Json& id, std::string_view method, const Json& params) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}};
}

Json callRequest(const Json& id, std::string_view tool, const Json& arguments) {
    return request(id, "tools/call", {{"name", tool}, {"arguments", arguments}});
}

Json cancelled(const Json& id) {
    return {{"jsonrpc", "2.0"},
            {"method", "notifications/cancelled"},
            {"params", {{"requestId", id}, {"reason", "changed my mind"}}}};
}

}  // namespace tandrel
