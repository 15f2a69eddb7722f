/*
 * tvkcore.h - the four services that libtvkgenu8 takes from libtvkcore:
 * processor feature detection and an aligned allocator.
 */
#ifndef TVKCORE_H
#define TVKCORE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Feature bits of the masks below. */
#define TVK_CPU_MMX     0x0001ull
#define TVK_CPU_SSE     0x0002ull
#define TVK_CPU_SSE2    0x0004ull
#define TVK_CPU_SSE3    0x0008ull
#define TVK_CPU_SSSE3   0x0010ull
#define TVK_CPU_MOVBE   0x0020ull
#define TVK_CPU_SSE41   0x0040ull
#define TVK_CPU_SSE42   0x0080ull
#define TVK_CPU_AVX     0x0100ull
#define TVK_CPU_AVX2    0x0200ull
#define TVK_CPU_FMA     0x0400ull

/* Detects the processor.  Either pointer may be null.  *featureMask receives
 * the detected feature bits; cpuidLeaf1, if given, the four registers
 * eax, ebx, ecx, edx of cpuid leaf 1.  Returns 0. */
int32_t tvkGetCpuFeatures(uint64_t* featureMask, uint32_t cpuidLeaf1[4]);

/* Feature bits enabled for use: those detected, less AVX-class bits when the
 * operating system does not save the YMM state. */
uint64_t tvkGetEnabledCpuFeatures(void);

/* A block of `size` bytes aligned to 64 bytes; null for a negative size or
 * when memory is exhausted.  A size of 0 gives a valid, unique block. */
void* tvkMalloc(int32_t size);

/* Releases a block from tvkMalloc; null is accepted and ignored. */
void tvkFree(void* block);

#ifdef __cplusplus
}
#endif

#endif /* TVKCORE_H */
