#pragma once

#include <map>
#include <optional>

#include "base/clock.h"
#include "base/mutex.h"
#include "base/uuid.h"

namespace tandrel {

// When each phone was last acted on, whose picture shows a moment later what came of it. Any
// thread.
class LastActions {
 public:
    void note(const Uuid& host, TimePoint ended) {
        MutexLock lock(mutex_);
        ended_[host] = ended;
    }

    std::optional<TimePoint> of(const Uuid& host) const {
        MutexLock lock(mutex_);
        const auto found = ended_.find(host);
        if (found == ended_.end()) return std::nullopt;
        return found->second;
    }

 private:
    mutable Mutex mutex_;
    std::map<Uuid, TimePoint> ended_ OWNED_BY(mutex_);
};

}  // namespace tandrel
