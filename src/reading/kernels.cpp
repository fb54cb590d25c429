#include "reading/kernels.h"

#include <vector>

namespace tandrel {

namespace {

bool hasAvx2() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#else
    return false;
#endif
}

bool hasVnni() {
#if defined(__x86_64__)
    return hasAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vnni");
#else
    return false;
#endif
}

}  // namespace

std::span<const Kernels* const> availableKernels() {
    static const auto kernels = [] {
        std::vector<const Kernels*> list;
        if (kVnniKernels && hasVnni()) list.push_back(kVnniKernels);
        if (kAvx2Kernels && hasAvx2()) list.push_back(kAvx2Kernels);
        list.push_back(kPortableKernels);
        return list;
    }();
    return kernels;
}

}  // namespace tandrel
