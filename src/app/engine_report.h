#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "app/status_notice.h"
#include "base/clock.h"
#include "base/json.h"
#include "base/result.h"
#include "http/loopback_url.h"
#include "screen/phone_screen.h"

// What the running engine says about itself and its phones, asked over HTTP as any program on this
// computer can ask it.
namespace tandrel {

// A phone that the engine sees the screen of.
struct PhoneSeen {
    std::string id;
    std::string name;
    ScreenSource source = ScreenSource::usb;
    bool bluetooth = false;  // its Bluetooth connection is known
    bool picture = false;    // at least one frame has come
    int width = 0;           // pixels; 0 before the first frame
    int height = 0;

    bool operator==(const PhoneSeen&) const = default;
};

// One of the computer's Bluetooth adapters.
struct AdapterReport {
    std::string name;
    bool peripheral = false;
    bool powered = false;
    bool advertising = false;
    std::string phone;  // the one that is connected; empty while none is
    std::vector<std::string> paired;
    int refusedPhones = 0;

    bool operator==(const AdapterReport&) const = default;
};

// How it stands with the mirrored picture.
struct AirPlayReport {
    std::string window;        // the title of what is being captured; empty when nothing is
    std::string receiver;      // the state of a receiver of our own, in a word; empty without one
    std::string receiverName;  // as the phone's list of screens shows it
    std::string error;         // why there is no picture

    bool operator==(const AirPlayReport&) const = default;
};

struct EngineReport {
    bool up = false;  // it answered; nothing below holds otherwise
    std::string app;  // who answered, "Tandrel" for this program
    std::string version;
    bool paused = false;
    bool asksBeforePayments = true;
    bool asking = false;    // a question about a payment is open
    std::string bluetooth;  // the keyboard's state in words
    std::vector<AdapterReport> adapters;
    std::vector<PhoneSeen> phones;
    std::vector<std::string> hosts;           // Bluetooth connections
    std::vector<std::string> unmatchedHosts;  // those of them whose screen is not known
    PhoneScreen screenState = PhoneScreen::unknown;
    std::optional<double> screenStateAgeSeconds;  // since a screen was last read
    AirPlayReport airplay;
    std::vector<std::string> absences;  // sentences on what this system lacks

    // The keyboard is published, so that a phone can connect or is connected.
    bool bluetoothReady() const;
    bool sees(ScreenSource source) const;        // a phone, with or without a picture
    bool hasPicture(ScreenSource source) const;  // at least one frame has come
    // A phone can be driven: one with a matched host, or without any screen a connected host.
    bool phoneConnected() const;
};

// Where a running engine listens.
struct EnginePlace {
    LoopbackUrl engine;
    LoopbackUrl airplay;
};

// The engine of this person that runs already: as TANDREL_ENGINE_URL, TANDREL_AIRPLAY_URL and the
// port variables say, else as `stateFile`, which the running copy keeps, else on the usual ports.
Result<EnginePlace> findEngine(const std::filesystem::path& stateFile);

// Blocks for at most `patience`; a reply that makes no sense counts as little as none.
EngineReport askEngine(const LoopbackUrl& engine, Duration patience, std::stop_token stop = {});

// From the reply to /status.
EngineReport parseEngineReport(const Json& status);

}  // namespace tandrel
