#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "base/serial_queue.h"
#include "base/uuid.h"
#include "hid/outbox.h"
#include "hid/report_map.h"
#include "hid/subscriptions.h"
#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// The computer as one Bluetooth LE keyboard and mouse (HID over GATT Profile 1.0): publishes the
// services, advertises them, knows which phones listen, and delivers reports in order to one phone
// each. A host is a phone that has subscribed to at least one input report.
//
// Everything happens on the queue "pocketlink.bluetooth". What waits for the queue must not be
// called from `onHostsChanged`, which runs on it.
class HIDPeripheral final : private BluetoothPeripheralDelegate {
 public:
    // `localName` is what phones see in their Bluetooth settings. Nothing is made before `start`.
    HIDPeripheral(std::string localName, MakeBluetoothPeripheral make, Clock& clock);
    ~HIDPeripheral() override;
    HIDPeripheral(const HIDPeripheral&) = delete;
    HIDPeripheral& operator=(const HIDPeripheral&) = delete;

    // The instance that start-up built; it must have been set.
    static HIDPeripheral& shared();
    static void setShared(HIDPeripheral* instance);

    const std::string& localName() const { return localName_; }

    // Makes the system's peripheral; the database follows when Bluetooth is on. Returns at once; a
    // second call does nothing.
    void start();
    // Begins afresh with a new peripheral and no knowledge of phones. Returns at once.
    void restart();
    // Lets go of everything held on every phone and waits at most kLongestFarewell until that and
    // what was sent before is handed over.
    void letGo();
    // Lets go of everything held on every phone, waits at most kLongestFarewell until that and what
    // was sent before is handed over, and ends the system's peripheral. Blocks. Nothing starts it
    // again; later reports are dropped.
    void stop();
    static constexpr Duration kLongestFarewell = std::chrono::milliseconds(300);

    // In no particular order. Waits for the queue.
    std::vector<Uuid> connectedHosts();
    // Delivers the report in order. Returns at once; a report for a phone that has not subscribed
    // to it is dropped.
    void send(ReportID report, std::span<const std::uint8_t> bytes, const Uuid& host);
    // One line for the owner. Waits for the queue.
    std::string state();
    // What the owner should do about Bluetooth, in a sentence; empty when nothing.
    std::string advice();
    // How the Bluetooth adapters stand; none where the system does not tell.
    std::vector<BluetoothAdapter> adapters();

    // A number that stays the same as long as the host has received every pointer report sent to
    // it; none while it receives none. Waits for the queue.
    std::optional<std::uint64_t> pointerLink(const Uuid& host);

    // Called on the queue, under no lock, whenever the set of hosts may have changed. It must not
    // wait for the queue: no `connectedHosts` or `state` from inside. Setting waits for a call
    // under way, so that none comes after an empty function was set.
    void setOnHostsChanged(std::function<void()> changed);

 private:
    void stateChanged(BluetoothState state) override;
    void serviceAdded(const std::string& serviceUuid,
                      const std::optional<std::string>& error) override;
    void advertisingStarted(const std::optional<AdvertisingError>& error) override;
    void subscribed(const Uuid& central, CharacteristicId characteristic) override;
    void unsubscribed(const Uuid& central, CharacteristicId characteristic) override;
    GattReadReply read(const GattRead& request) override;
    AttError write(const std::vector<GattWrite>& requests) override;
    void readyToUpdateSubscribers() override;

    void makeManager() RUNS_ON(queue_);
    void endManager() RUNS_ON(queue_);
    void publish() RUNS_ON(queue_);
    void addNextService() RUNS_ON(queue_);
    void advertise() RUNS_ON(queue_);
    void hostsChanged() RUNS_ON(queue_);
    void callHostsChanged() RUNS_ON(queue_);
    void forgetPhones() RUNS_ON(queue_);
    void deliver(const Report& report, const Uuid& host) RUNS_ON(queue_);
    void releaseHeld() RUNS_ON(queue_);
    void drain() RUNS_ON(queue_);
    void awaitFarewell();
    void checkStaleCache(const Uuid& central) RUNS_ON(queue_);

    const std::string localName_;
    const MakeBluetoothPeripheral make_;
    Clock& clock_;
    const std::shared_ptr<Wakeup> farewell_ = std::make_shared<Wakeup>();
    bool outboxEmpty_ = true;  // under farewell_->mutex

    std::unique_ptr<BluetoothPeripheral> manager_ OWNED_BY(queue_);
    std::string state_ OWNED_BY(queue_) = "starting";
    std::function<void()> onHostsChanged_ OWNED_BY(queue_);
    Subscriptions subscriptions_ OWNED_BY(queue_);
    // Phones sent a Service Changed indication since the last restart, each once.
    std::set<Uuid> serviceChangedSent_ OWNED_BY(queue_);
    std::deque<GattService> servicesToAdd_ OWNED_BY(queue_);
    bool published_ OWNED_BY(queue_) = false;
    bool stopped_ OWNED_BY(queue_) = false;
    Outbox outbox_ OWNED_BY(queue_);
    SerialQueue queue_;
};

}  // namespace tandrel
