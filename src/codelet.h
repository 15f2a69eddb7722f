// Support for the generated Codelet bodies: entry checks, scale choice and
// the memory access forms of the aligned and unaligned paths.
#pragma once

#include <pmmintrin.h>  // SSE3 at most: the bodies use nothing newer
#include <stdint.h>

#include "tvkgen.h"

#define TVK_INTERNAL __attribute__((visibility("hidden")))
#define TVK_BODY static inline __attribute__((always_inline))

namespace tvk {

enum Direction { Forward, Inverse, SelfInverse };

// The three literal scales of a body: 1, 1/sqrt(N), 1/N.
template <class S>
struct Scales {
    S one, rsqrt, recip;
};

inline bool aligned16(const void* a, const void* b) {
    return ((reinterpret_cast<uintptr_t>(a) | reinterpret_cast<uintptr_t>(b)) & 15) == 0;
}

// The checks of every Codelet, in their order, then the unscaled transform
// with the flag's constant applied to each output just before its store.
// The flag's constant into `s`; false for a flag that is not one of the four.
template <Direction D, class S>
__attribute__((always_inline)) inline bool pickScale(int32_t flag, const Scales<S>& k, S& s) {
    switch (flag) {
        case ScaleDivFwdByN: s = D == Inverse ? k.one : k.recip; return true;
        case ScaleDivInvByN: s = D == Forward ? k.one : k.recip; return true;
        case ScaleDivBySqrtN: s = k.rsqrt; return true;
        case ScaleNoDiv: s = k.one; return true;
        default: return false;
    }
}

template <Direction D, auto Body, class T, class U, class S>
__attribute__((always_inline)) inline tvkStatus run(const T* src, U* dst, int32_t flag, const Scales<S>& k) {
    if (!src || !dst) return StatusNullPtr;
    S s;
    if (!pickScale<D>(flag, k, s)) return StatusScaleFlag;
    Body(src, dst, s);
    return StatusOk;
}

// Element k of an array of T at any address, even one that is not a multiple
// of T's size: the copy is well defined where a T lvalue would not be, and
// compiles to the same single move.
template <class T>
inline T load(const void* base, int k) {
    T v;
    __builtin_memcpy(&v, static_cast<const char*>(base) + k * sizeof(T), sizeof v);
    return v;
}

template <class T>
inline void store(void* base, int k, T v) {
    __builtin_memcpy(static_cast<char*>(base) + k * sizeof(T), &v, sizeof v);
}

// The real part of element k of a complex array, as a pointer: arithmetic
// on the address only, no access, so any alignment of the array will do.
template <class C>
inline auto partsAt(C* p, int k) -> decltype(&p->re) {
    return reinterpret_cast<decltype(&p->re)>(p) + 2 * k;
}

// Memory forms.  Elementwise bodies touch single values and need none.
struct Elementwise {};

struct Aligned64 {
    static __m128d load(const double* p) { return _mm_load_pd(p); }
    static void store(double* p, __m128d v) { _mm_store_pd(p, v); }
};

// Two 8-byte halves per element: the same arithmetic on any address.  The
// low half of a load is a copy and the stores are the 64-bit moves of the
// single-precision set, since _mm_load_sd and _mm_storel_pd / _mm_storeh_pd
// go through a double lvalue, which an odd address does not allow.
struct Unaligned64 {
    static __m128d load(const double* p) { return _mm_loadh_pd(_mm_set_sd(tvk::load<double>(p, 0)), p + 1); }
    static void store(double* p, __m128d v) {
        _mm_storel_pi(reinterpret_cast<__m64*>(p), _mm_castpd_ps(v));
        _mm_storeh_pi(reinterpret_cast<__m64*>(p + 1), _mm_castpd_ps(v));
    }
};

// tvk32fc vector bodies move two complex elements per 16-byte access.
struct Aligned32 {
    static __m128 load(const float* p) { return _mm_load_ps(p); }
    static void store(float* p, __m128 v) { _mm_store_ps(p, v); }
};

struct Unaligned32 {
    static __m128 load(const float* p) { return _mm_loadu_ps(p); }
    static void store(float* p, __m128 v) { _mm_storeu_ps(p, v); }
};

// One complex element into, or out of, the low or the high half of a vector.
inline __m128 loadLow(__m128 v, const tvk32fc* p) { return _mm_loadl_pi(v, reinterpret_cast<const __m64*>(p)); }
inline __m128 loadHigh(__m128 v, const tvk32fc* p) { return _mm_loadh_pi(v, reinterpret_cast<const __m64*>(p)); }
inline void storeLow(tvk32fc* p, __m128 v) { _mm_storel_pi(reinterpret_cast<__m64*>(p), v); }
inline void storeHigh(tvk32fc* p, __m128 v) { _mm_storeh_pi(reinterpret_cast<__m64*>(p), v); }
inline __m128 negate(__m128 a) { return _mm_xor_ps(a, _mm_set1_ps(-0.0f)); }

// ---- complex helpers of the interleaved form (real part in the low half) ----

// The bodies keep signs and products by +-i in the form of each register
// (see the interleaved back-end); the swap is the one shuffle they need.
inline __m128d swapHalves(__m128d a) { return _mm_shuffle_pd(a, a, 1); }

}  // namespace tvk
