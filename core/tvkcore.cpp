// libtvkcore: processor detection with cpuid and a 64-byte aligned allocator.
#include "tvkcore.h"

#include <cpuid.h>
#include <cstdlib>

namespace {

uint64_t detect(uint32_t leaf1[4]) {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return 0;
    if (leaf1) {
        leaf1[0] = eax; leaf1[1] = ebx; leaf1[2] = ecx; leaf1[3] = edx;
    }
    uint64_t mask = 0;
    if (edx & bit_MMX) mask |= TVK_CPU_MMX;
    if (edx & bit_SSE) mask |= TVK_CPU_SSE;
    if (edx & bit_SSE2) mask |= TVK_CPU_SSE2;
    if (ecx & bit_SSE3) mask |= TVK_CPU_SSE3;
    if (ecx & bit_SSSE3) mask |= TVK_CPU_SSSE3;
    if (ecx & bit_MOVBE) mask |= TVK_CPU_MOVBE;
    if (ecx & bit_SSE4_1) mask |= TVK_CPU_SSE41;
    if (ecx & bit_SSE4_2) mask |= TVK_CPU_SSE42;
    if (ecx & bit_AVX) mask |= TVK_CPU_AVX;
    if (ecx & bit_FMA) mask |= TVK_CPU_FMA;
    unsigned eax7 = 0, ebx7 = 0, ecx7 = 0, edx7 = 0;
    if (__get_cpuid_count(7, 0, &eax7, &ebx7, &ecx7, &edx7) && (ebx7 & bit_AVX2)) mask |= TVK_CPU_AVX2;
    return mask;
}

// AVX-class features are usable only when the OS saves the YMM state.
bool osSavesYmm() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx) || !(ecx & bit_OSXSAVE)) return false;
    unsigned lo, hi;
    __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (lo & 0x6) == 0x6;
}

}  // namespace

extern "C" int32_t tvkGetCpuFeatures(uint64_t* featureMask, uint32_t cpuidLeaf1[4]) {
    const uint64_t mask = detect(cpuidLeaf1);
    if (featureMask) *featureMask = mask;
    return 0;
}

extern "C" uint64_t tvkGetEnabledCpuFeatures(void) {
    uint64_t mask = detect(nullptr);
    if (!osSavesYmm()) mask &= ~(TVK_CPU_AVX | TVK_CPU_AVX2 | TVK_CPU_FMA);
    return mask;
}

extern "C" void* tvkMalloc(int32_t size) {
    if (size < 0) return nullptr;
    void* block = nullptr;
    const size_t bytes = size == 0 ? 64 : (static_cast<size_t>(size) + 63) & ~size_t{63};
    if (posix_memalign(&block, 64, bytes) != 0) return nullptr;
    return block;
}

extern "C" void tvkFree(void* block) { std::free(block); }
