// Our Bluetooth keyboard and pointer without the rest of the application, for the virtual machine:
//   hid_probe PIPE
// obeys the lines written to the named pipe, on the phone that is connected or was last:
//   type TEXT | tap X Y | drag POINTS | home | report ID HEX... | burst COUNT RATE | quit
// and prints what became of each with the time.

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <sys/stat.h>

#include "base/environment.h"
#include "hid/hid_peripheral.h"
#include "hid/input.h"
#include "platform/linux/bluez_peripheral.h"

namespace tandrel {
namespace {

double uptime() { return toSeconds(systemClock().now().time_since_epoch()); }

void say(const std::string& text) {
    std::cout << fmt::format("{:9.3f} probe {}", uptime(), text) << std::endl;
}

void sendHex(HIDPeripheral& hid, std::istream& words, const Uuid& host) {
    int id = 0;
    words >> id;
    Bytes bytes;
    for (std::string word; words >> word;) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(word, nullptr, 16)));
    }
    hid.send(static_cast<ReportID>(id), bytes, host);
}

// Numbered moves of the absolute pointer, handed over at this rate.
void burst(HIDPeripheral& hid, int count, double rate, const Uuid& host) {
    const TimePoint start = systemClock().now();
    std::vector<double> sent;
    for (int i = 1; i <= count; ++i) {
        const Bytes bytes = {0, static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i >> 8), 0,
                             0};
        sent.push_back(uptime());
        hid.send(ReportID::absolutePointer, bytes, host);
        systemClock().sleepUntil(start + seconds(i / rate));
    }
    for (std::size_t i = 0; i < sent.size(); ++i) {
        std::cout << fmt::format("SENT burst {} {:g} {} {:.4f}\n", count, rate, i + 1, sent[i]);
    }
}

void obey(HIDPeripheral& hid, const std::string& line, const Uuid& host) {
    std::istringstream words(line);
    std::string verb;
    words >> verb;
    Input input(hid, host, systemClock());
    Result<void> result;
    if (verb == "type") {
        result = input.type(line.substr(5));
    } else if (verb == "tap") {
        double x = 0, y = 0;
        words >> x >> y;
        result = input.tap({x, y});
    } else if (verb == "drag") {
        int points = 0;
        words >> points;
        result = input.swipe({0.1, 0.1}, {0.9, 0.9}, points * input.step());
    } else if (verb == "home") {
        result = input.consumer(0x223);
    } else if (verb == "report") {
        sendHex(hid, words, host);
    } else if (verb == "burst") {
        int count = 0;
        double rate = 1;
        words >> count >> rate;
        burst(hid, count, rate, host);
    }
    say(line + (result ? ": done" : ": " + result.error().message));
}

int run(const char* pipe) {
    ::mkfifo(pipe, 0600);
    BluezOptions options;
    options.adapters = BluezOptions::parseAdapters(environment("HCI").value_or(""));
    HIDPeripheral hid("Tandrel", makeBluezPeripheral(options), systemClock());
    hid.setOnHostsChanged([] { say("hosts changed"); });
    hid.start();
    std::optional<Uuid> host;  // stays the last one's, so that an absent phone can be written to
    for (;;) {
        std::ifstream commands(pipe);
        for (std::string line; std::getline(commands, line);) {
            if (line == "quit") {
                hid.stop();
                say("ended");
                return 0;
            }
            const auto hosts = hid.connectedHosts();
            if (!hosts.empty()) host = hosts.front();
            if (host) {
                obey(hid, line, *host);
            } else {
                say(line + ": no phone; " + hid.state());
            }
        }
    }
}

}  // namespace
}  // namespace tandrel

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: hid_probe PIPE\n";
        return 2;
    }
    const char* pipe = arguments[1];
    // A signal ends it as the application is ended: what is held is let go.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    std::thread([ending, pipe] {
        int signal = 0;
        sigwait(&ending, &signal);
        std::ofstream(pipe) << "quit\n";
    }).detach();
    return tandrel::run(pipe);
}
