#pragma once

#include <sys/fsuid.h>
#include <unistd.h>

namespace tandrel {

// While it lives, this thread meets files as the user "nobody" does, so that a test run by root
// meets closed doors, too. For any other user it changes nothing.
class AsNobody {
 public:
    AsNobody() { ::setfsuid(::geteuid() == 0 ? kNobody : ::geteuid()); }
    ~AsNobody() { ::setfsuid(::geteuid()); }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

 private:
    static constexpr uid_t kNobody = 65534;
};

}  // namespace tandrel
