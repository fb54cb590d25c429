#include "helper/conversation.h"

#include <array>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

#include "helper/mcp_server.h"

namespace tandrel {
namespace {

constexpr std::size_t kPiece = 64 * 1024;

// Waits for input; false when the app no longer reads what it is sent.
bool awaitInput(int input, int output) {
    while (true) {
        std::array<pollfd, 2> ends = {pollfd{input, POLLIN, 0}, pollfd{output, 0, 0}};
        if (::poll(ends.data(), ends.size(), -1) < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (ends[1].revents != 0) return false;
        if (ends[0].revents != 0) return true;
    }
}

}  // namespace

void converse(int input, int output, const std::string& version, CallTimes times) {
    LineWriter writer(output, input);
    McpServer server(writer, version, times);
    LineReader lines(
        [&](LineReader::Kind kind, std::string_view line) { server.receive(kind, line); });
    std::string piece(kPiece, '\0');
    while (awaitInput(input, output)) {
        const ssize_t count = ::read(input, piece.data(), piece.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (count <= 0) break;
        lines.append({piece.data(), static_cast<std::size_t>(count)});
    }
    lines.finish();
    server.stop();
}

}  // namespace tandrel
