// Support for the generated Walsh-Hadamard bodies: the butterfly, the lane
// exchange of tvk64f and the entry of the buffered orders.
#pragma once

#include "codelet.h"
#include "tvkcore.h"

namespace tvk {

// (a, b) <- (a + b, a - b): one stage on one pair, the lower index the minuend.
inline void butterfly(float& a, float& b) {
    const float t = a;
    a = t + b;
    b = t - b;
}
inline void butterfly(double& a, double& b) {
    const double t = a;
    a = t + b;
    b = t - b;
}
inline void butterfly(__m128& a, __m128& b) {
    const __m128 t = a;
    a = _mm_add_ps(t, b);
    b = _mm_sub_ps(t, b);
}
inline void butterfly(__m128d& a, __m128d& b) {
    const __m128d t = a;
    a = _mm_add_pd(t, b);
    b = _mm_sub_pd(t, b);
}

// (x0, x1), (x2, x3) <-> (x0, x2), (x1, x3); its own inverse.
inline void exchange(__m128d& a, __m128d& b) {
    const __m128d lo = _mm_unpacklo_pd(a, b);
    b = _mm_unpackhi_pd(a, b);
    a = lo;
}

// Entry of orders 8 to 13: the checks, then the caller's buffer or one block
// of `Bytes` from the allocator for this call only, the passes, the release.
// The allocation is not checked: callers that cannot afford it pass a buffer.
template <auto Passes, int32_t Bytes, class T>
__attribute__((always_inline)) inline tvkStatus runBuffered(const T* src, T* dst, int32_t flag, uint8_t* buffer,
                                                            const Scales<T>& k) {
    if (!src || !dst) return StatusNullPtr;
    T s;
    if (!pickScale<SelfInverse>(flag, k, s)) return StatusScaleFlag;
    const bool allocated = !buffer;
    if (allocated) buffer = static_cast<uint8_t*>(tvkMalloc(Bytes));
    Passes(src, dst, reinterpret_cast<T*>(buffer), s);
    if (allocated) tvkFree(buffer);
    return StatusOk;
}

}  // namespace tvk
