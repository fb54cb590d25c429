#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// The Bluetooth system as a test plays it: keeps what the program publishes and sends, across
// restarts, and acts as radio and phones. Its verbs wait until the program has dealt with them.
//
// A phone is "A" to "F". A characteristic is "1" to "4" for the input report of that id, "LEDs" for
// the keyboard's output report, else its UUID; it is looked up in what was published, as a phone
// does, so the database must have been added.
class FakeBluetooth {
 public:
    FakeBluetooth();

    // What lines of the transcript begin with.
    std::function<std::string()> stamp = [] { return std::string(); };
    // Adding services or advertising fails with these while they are set.
    std::optional<std::string> addError;
    std::optional<AdvertisingError> advertisingError;
    // The system has no Bluetooth.
    bool absent = false;

    MakeBluetoothPeripheral maker();

    void changeState(BluetoothState state);
    void powerOn() { changeState(BluetoothState::poweredOn); }
    void subscribe(const std::string& phone, const std::string& characteristic);
    void unsubscribe(const std::string& phone, const std::string& characteristic);
    GattReadReply read(const std::string& characteristic, std::size_t offset = 0);
    AttError write(const std::string& phone, const std::string& characteristic, Bytes value);
    void refuseNextUpdates(int count);
    void becomeReady();

    // Block until so many updates were accepted or refused since the start.
    void awaitAccepted(int count);
    void awaitRefused(int count);

    // Updates that were accepted: stamp, phone, characteristic, bytes in hexadecimal.
    std::vector<std::string> transcript();
    void clearTranscript();
    std::vector<GattService> services();
    // "name: UUIDs", empty when not advertising.
    std::string advertising();
    int peripheralsMade();
    bool hasPeripheral();

    static Uuid phone(const std::string& name);

 private:
    class Peripheral;
    struct World;

    // Runs the verb on the program's queue, and waits for what it led to there.
    void act(const std::function<void(World&)>& verb);

    // How this is once the program has dealt with all that came before.
    template <typename T>
    T now(T World::* member);

    const std::shared_ptr<World> world_;
};

}  // namespace tandrel
