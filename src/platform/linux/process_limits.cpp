#include "platform/linux/process_limits.h"

#include <algorithm>

#include <malloc.h>
#include <sys/resource.h>

#include "base/log.h"

namespace tandrel {

void raiseFileLimit() {
    constexpr rlim_t kFiles = 8192;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= kFiles) return;
    limit.rlim_cur = std::min(limit.rlim_max, kFiles);
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) log("can't raise the limit of open files");
}

void shareHeaps() {
    constexpr int kHeaps = 2;
    ::mallopt(M_ARENA_MAX, kHeaps);
}

}  // namespace tandrel
