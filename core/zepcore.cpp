// SPDX-License-Identifier: BSD-3-Clause
// The core library: CPUID feature mask and 64-byte aligned scratch memory.
// On hosts other than x86-64 the mask is empty (no x86 feature to report).
#include "core/zepcore.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

#include <cstdint>
#include <cstdlib>

namespace {

#if defined(__x86_64__)
constexpr unsigned kEcxSse3 = 1u << 0, kEcxSsse3 = 1u << 9, kEcxSse41 = 1u << 19,
                   kEcxSse42 = 1u << 20, kEcxMovbe = 1u << 22, kEcxOsxsave = 1u << 27,
                   kEcxAvx = 1u << 28;
constexpr unsigned kEdxMmx = 1u << 23, kEdxSse = 1u << 25, kEdxSse2 = 1u << 26;

bool os_saves_ymm() {
    unsigned lo = 0, hi = 0;
    __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (lo & 0x6u) == 0x6u;  // XMM and YMM state enabled
}

std::uint64_t read_features() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return 0;
    std::uint64_t m = 0;
    if (edx & kEdxMmx) m |= ZEP_CPU_MMX;
    if (edx & kEdxSse) m |= ZEP_CPU_SSE;
    if (edx & kEdxSse2) m |= ZEP_CPU_SSE2;
    if (ecx & kEcxSse3) m |= ZEP_CPU_SSE3;
    if (ecx & kEcxSsse3) m |= ZEP_CPU_SSSE3;
    if (ecx & kEcxMovbe) m |= ZEP_CPU_MOVBE;
    if (ecx & kEcxSse41) m |= ZEP_CPU_SSE41;
    if (ecx & kEcxSse42) m |= ZEP_CPU_SSE42;
    if ((ecx & kEcxAvx) && (ecx & kEcxOsxsave) && os_saves_ymm()) m |= ZEP_CPU_AVX;
    return m;
}
#else
std::uint64_t read_features() { return 0; }
#endif

}  // namespace

extern "C" std::uint64_t zepGetEnabledCpuFeatures(void) {
    static const std::uint64_t mask = read_features();
    return mask;
}

extern "C" void* zepMalloc(int len) {
    if (len < 1) return nullptr;
    const std::size_t size = (static_cast<std::size_t>(len) + 63u) & ~std::size_t{63};
    return std::aligned_alloc(64, size);
}

extern "C" void zepFree(void* ptr) { std::free(ptr); }
