#pragma once

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// Publishes services as soon as the radio is on, advertises, and writes down what it is told.
class Publisher final : public BluetoothPeripheralDelegate {
 public:
    // `services` are published in order. `clock` is the queue's.
    Publisher(const MakeBluetoothPeripheral& make, std::vector<GattService> services,
              Clock& clock = systemClock())
        : services_(std::move(services)), queue_("publisher", clock) {
        queue_.sync([&] { peripheral_ = make(*this, queue_); });
    }
    ~Publisher() override { end(); }

    void end() {
        queue_.sync([this] { peripheral_.reset(); });
    }
    // One of the peripheral's operations, on its queue.
    template <typename Function>
    auto with(Function function) {
        return queue_.sync([&] { return function(*peripheral_); });
    }
    Delivery send(CharacteristicId characteristic, const Bytes& value,
                  const std::vector<Uuid>& centrals) {
        return with([&](auto& to) { return to.updateValue(characteristic, value, centrals); });
    }

    // Whether it has been told so, at the latest within some seconds. Each event counts once and
    // those before it are forgotten, so that a row of calls tells the order.
    bool await(const std::string& event) {
        std::unique_lock lock(mutex_);
        const bool came = changed_.wait_for(lock, std::chrono::seconds(10), [&] {
            return std::ranges::find(events_, event) != events_.end();
        });
        if (came) events_.erase(events_.begin(), std::ranges::find(events_, event) + 1);
        return came;
    }
    // Waits until so many subscriptions of the central stand.
    bool awaitSubscriptions(const Uuid& central, std::size_t count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return subscriptionsOf(central) == count; });
    }
    std::vector<std::string> takeEvents() {
        std::lock_guard lock(mutex_);
        return std::exchange(events_, {});
    }

    void stateChanged(BluetoothState state) override {
        tell(std::string(name(state)));
        {
            std::lock_guard lock(mutex_);
            subscriptions_.clear();
        }
        if (state != BluetoothState::poweredOn) return;
        peripheral_->removeAllServices();
        added_ = 0;
        peripheral_->addService(services_.front());
    }
    void serviceAdded(const std::string& uuid, const std::optional<std::string>& error) override {
        tell("added " + uuid.substr(4, 4) + error.value_or(""));
        if (++added_ < services_.size()) return peripheral_->addService(services_[added_]);
        if (!peripheral_->isAdvertising()) peripheral_->startAdvertising("Test", {"1812"});
    }
    void advertisingStarted(const std::optional<AdvertisingError>& error) override {
        tell(!error                      ? "advertising"
             : error->alreadyAdvertising ? "already advertising"
                                         : "failed: " + error->description);
    }
    void subscribed(const Uuid& central, CharacteristicId characteristic) override {
        std::lock_guard lock(mutex_);
        subscriptions_.emplace_back(central, characteristic);
        events_.push_back("subscribed " + std::to_string(characteristic));
        changed_.notify_all();
    }
    void unsubscribed(const Uuid& central, CharacteristicId characteristic) override {
        std::lock_guard lock(mutex_);
        std::erase(subscriptions_, std::pair(central, characteristic));
        events_.push_back("unsubscribed " + std::to_string(characteristic));
        changed_.notify_all();
    }
    GattReadReply read(const GattRead& request) override {
        EXPECT_TRUE(queue_.isCurrent());
        if (request.characteristic != readable) return {AttError::attributeNotFound, {}};
        if (request.offset > 2) return {AttError::invalidOffset, {}};
        return {AttError::none, Bytes(2 - request.offset, 0x64)};
    }
    AttError write(const std::vector<GattWrite>& requests) override {
        for (const GattWrite& request : requests) {
            tell("write " + std::to_string(request.characteristic) + " of " +
                 std::to_string(request.value.size()));
        }
        return AttError::none;
    }
    void readyToUpdateSubscribers() override { tell("ready"); }

    CharacteristicId readable = 0;  // reads as two bytes

 private:
    void tell(std::string event) {
        EXPECT_TRUE(queue_.isCurrent());
        std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
        changed_.notify_all();
    }
    std::size_t subscriptionsOf(const Uuid& central) const {
        return static_cast<std::size_t>(
            std::ranges::count(subscriptions_, central, &std::pair<Uuid, CharacteristicId>::first));
    }

    const std::vector<GattService> services_;
    std::size_t added_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> events_;
    std::vector<std::pair<Uuid, CharacteristicId>> subscriptions_;
    std::unique_ptr<BluetoothPeripheral> peripheral_;
    SerialQueue queue_;
};

}  // namespace tandrel
