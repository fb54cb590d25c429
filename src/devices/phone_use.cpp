#include "devices/phone_use.h"

namespace tandrel {

struct PhoneUse::State {
    struct Phone {
        int actions = 0;
        bool probed = false;
        bool isFreeFor(bool probe) const { return !probed && (!probe || actions == 0); }
    };
    std::shared_ptr<Wakeup> wakeup = std::make_shared<Wakeup>();
    std::map<Uuid, Phone> phones;  // under wakeup->mutex; one entry for each phone ever used
};

PhoneUse::PhoneUse(Clock& clock) : clock_(clock), state_(std::make_shared<State>()) {
    clock_.attach(state_->wakeup);
}

PhoneUse::Hold::~Hold() {
    {
        std::lock_guard lock(state_->wakeup->mutex);
        auto& phone = state_->phones[host_];
        if (probe_) {
            phone.probed = false;
        } else {
            --phone.actions;
        }
    }
    state_->wakeup->condition.notify_all();
}

std::unique_ptr<PhoneUse::Hold> PhoneUse::act(const Uuid& host, Duration patience,
                                              std::stop_token stop) {
    return take(host, false, patience, stop);
}

std::unique_ptr<PhoneUse::Hold> PhoneUse::probe(const Uuid& host, Duration patience,
                                                std::stop_token stop) {
    return take(host, true, patience, stop);
}

std::unique_ptr<PhoneUse::Hold> PhoneUse::take(const Uuid& host, bool probe, Duration patience,
                                               const std::stop_token& stop) {
    const TimePoint deadline = clock_.now() + patience;
    const std::stop_callback wake(stop, [this] {
        {
            std::lock_guard taken(state_->wakeup->mutex);
        }
        state_->wakeup->condition.notify_all();
    });
    std::unique_lock lock(state_->wakeup->mutex);
    auto& phone = state_->phones[host];
    while (!phone.isFreeFor(probe)) {
        if (stop.stop_requested() || clock_.now() >= deadline) return nullptr;
        clock_.waitUntil(lock, *state_->wakeup, deadline);
    }
    if (stop.stop_requested()) return nullptr;
    if (probe) {
        phone.probed = true;
    } else {
        ++phone.actions;
    }
    return std::make_unique<Hold>(state_, host, probe);
}

}  // namespace tandrel
