#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/bluetooth_peripheral.h"
#include "platform/linux/bluez_agent.h"
#include "platform/linux/bluez_bonds.h"
#include "platform/linux/bluez_registration.h"
#include "platform/linux/bluez_watch.h"
#include "platform/linux/bus_loop.h"

namespace tandrel::bluez {

// A phone that can be sent to: connected, its services known, and alone at its adapter.
struct PhoneLink {
    std::string device;  // its object path
    Uuid central;
    std::uint64_t number = 0;  // no other link has it
    std::set<CharacteristicId> listens;

    bool operator==(const PhoneLink&) const = default;
};

// What a session tells, on the thread of its connection.
class SessionEvents {
 public:
    virtual ~SessionEvents() = default;
    virtual void stateIs(BluetoothState state, const std::string& sentence) = 0;
    // Told when anything about them has changed.
    virtual void adaptersAre(const std::vector<BluetoothAdapter>& adapters) = 0;
    // Something that the owner should hear of.
    virtual void advise(const std::string& sentence) = 0;
    virtual void advertised(const std::optional<std::string>& error) = 0;
    virtual void linkIs(const std::string& adapter, const std::optional<PhoneLink>& link) = 0;
    // So many reports to this adapter's phone have been taken by the daemon, or dropped.
    virtual void taken(const std::string& adapter, int count) = 0;
    // Answered by `answerRead` and `answerWrite` with the same number.
    virtual void read(std::uint64_t number, const GattRead& request) = 0;
    virtual void write(std::uint64_t number, const GattWrite& request) = 0;
};

// Everything that is done with bluetoothd over one connection. It brings what is published and what
// is registered into line whenever anything changes, so that a restarted daemon, an adapter that
// comes back and one that is switched on again need no rules of their own.
class Session final : private GattRequests {
 public:
    struct Options {
        std::set<std::string> adapters;                // "hci0"; empty: all
        Duration retry = std::chrono::seconds(10);     // after the daemon refused us
        Duration deafness = std::chrono::seconds(15);  // until a silent phone is sent away once
    };

    // All on the loop's thread; all three outlive this object.
    Session(sdbus::IConnection& bus, BusLoop& loop, SessionEvents& events, Options options);
    ~Session() override;

    void publish(const Publication& publication);
    void stopAdvertising();
    // Sends it if the link is still the same.
    void notify(const std::string& adapter, std::uint64_t link, CharacteristicId characteristic,
                const Bytes& value);
    void answerRead(std::uint64_t number, const GattReadReply& reply);
    void answerWrite(std::uint64_t number, AttError error);

 private:
    using Registrations = std::map<std::string, std::unique_ptr<Registration>>;

    void read(const std::string& device, CharacteristicId characteristic, std::size_t offset,
              ValueResult result) override;
    void write(const std::string& device, CharacteristicId characteristic, Bytes value,
               DoneResult result) override;
    void usedBy(const std::string& device) override;
    void notifyingChanged() override;

    void refresh();
    void followAddresses();
    void refreshState();
    void refreshAdapters();
    void refreshRegistrations();
    void refreshLink(Registration& registration);
    void setLink(Registration& registration, const std::string& phone);
    void sendAway(const std::string& device, const char* why);
    void checkDeafness(const std::string& adapter, std::uint64_t link);
    void ping();
    void later(Duration delay, std::function<void()> task);
    void watchSleep();

    bool mayPair(const std::string& device);
    bool isChosen(const std::string& adapter) const;
    std::string guessUser(const std::string& adapter) const;
    std::set<std::string> usersAt(const std::string& adapter) const;
    Uuid centralBehind(const std::string& device) const;

    sdbus::IConnection& bus_;
    BusLoop& loop_;
    SessionEvents& events_;
    const Options options_;
    Watch watch_;
    Agent agent_;
    BondWatch bonds_;
    const std::unique_ptr<sdbus::IProxy> daemon_;

    std::optional<Publication> publication_;
    Registrations registrations_;
    bool agentRegistered_ = false;
    bool retrying_ = false;
    bool wasPresent_ = false;
    std::optional<std::pair<BluetoothState, std::string>> lastState_;

    std::set<std::string> users_;                   // addresses that have used our services
    std::map<std::string, std::string> addresses_;  // by path, as last seen
    std::map<std::string, std::string> guesses_;    // by adapter: who probably subscribed
    std::map<std::string, PhoneLink> links_;        // by adapter
    // Devices that were asked to leave, by path, until they have.
    std::map<std::string, std::unique_ptr<sdbus::IProxy>> farewells_;
    std::set<std::string> slept_;  // adapters that may have lost their advertisement over a sleep
    std::map<std::string, int> refusals_;  // by adapter: phones sent away for another
    std::vector<BluetoothAdapter> lastAdapters_;
    std::set<std::string> deaf_;  // addresses sent away once for being silent
    std::uint64_t lastLink_ = 0;

    std::map<std::string, int> untaken_;  // reports by adapter since the last answered ping
    bool pinging_ = false;

    std::uint64_t lastRequest_ = 0;
    std::map<std::uint64_t, ValueResult> reads_;
    std::map<std::uint64_t, DoneResult> writes_;
    // Tasks of the loop hold it weakly, so that none runs once this object has gone.
    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace tandrel::bluez
