// Declarations of the private bodies that the hand-written length switches
// and the stubs' rows lead to.
#pragma once

#include "codelet.h"

extern "C" {

#define TVK_DECLARE_DFT_BODIES(N)                                                                   \
    TVK_INTERNAL tvkStatus u8_tvkgDFTFwd_CToC_##N##_32fc(const tvk32fc* src, tvk32fc* dst, int32_t flag); \
    TVK_INTERNAL tvkStatus u8_tvkgDFTFwd_CToC_##N##_64fc(const tvk64fc* src, tvk64fc* dst, int32_t flag); \
    TVK_INTERNAL tvkStatus u8_tvkgDFTInv_CToC_##N##_32fc(const tvk32fc* src, tvk32fc* dst, int32_t flag); \
    TVK_INTERNAL tvkStatus u8_tvkgDFTInv_CToC_##N##_64fc(const tvk64fc* src, tvk64fc* dst, int32_t flag);
TVKGEN_DFT_LENGTHS(TVK_DECLARE_DFT_BODIES)
#undef TVK_DECLARE_DFT_BODIES

#define TVK_DECLARE_REAL_BODIES_OF(N, T)                                                                      \
    TVK_INTERNAL tvkStatus u8_tvkgDFTFwd_RToCCS_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag);  \
    TVK_INTERNAL tvkStatus u8_tvkgDFTFwd_RToPack_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag); \
    TVK_INTERNAL tvkStatus u8_tvkgDFTFwd_RToPerm_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag); \
    TVK_INTERNAL tvkStatus u8_tvkgDFTInv_CCSToR_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag);  \
    TVK_INTERNAL tvkStatus u8_tvkgDFTInv_PackToR_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag); \
    TVK_INTERNAL tvkStatus u8_tvkgDFTInv_PermToR_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag);
#define TVK_DECLARE_REAL_BODIES(N) TVK_DECLARE_REAL_BODIES_OF(N, 32f) TVK_DECLARE_REAL_BODIES_OF(N, 64f)
TVKGEN_DFT_LENGTHS(TVK_DECLARE_REAL_BODIES)
#undef TVK_DECLARE_REAL_BODIES
#undef TVK_DECLARE_REAL_BODIES_OF

#define TVK_DECLARE_HARTLEY_BODIES(N)                                                                      \
    TVK_INTERNAL tvkStatus u8_tvkgHartley_##N##_32f(const tvk32f* src, tvk32f* dst, int32_t flag); \
    TVK_INTERNAL tvkStatus u8_tvkgHartley_##N##_64f(const tvk64f* src, tvk64f* dst, int32_t flag);
TVKGEN_DFT_LENGTHS(TVK_DECLARE_HARTLEY_BODIES)
#undef TVK_DECLARE_HARTLEY_BODIES

#define TVK_DECLARE_WHT_BODIES(M)                                                                             \
    TVK_INTERNAL tvkStatus u8_tvkgWHT_##M##_32f(const tvk32f* src, tvk32f* dst, int32_t flag, uint8_t* buffer); \
    TVK_INTERNAL tvkStatus u8_tvkgWHT_##M##_64f(const tvk64f* src, tvk64f* dst, int32_t flag, uint8_t* buffer);
TVKGEN_WHT_ORDERS(TVK_DECLARE_WHT_BODIES)
#undef TVK_DECLARE_WHT_BODIES

}

namespace tvk {

// Lengths 2 to 64 pass; every other value, negatives included, fails.  The
// subtraction is done unsigned so that INT_MIN does not overflow.
inline bool lengthInRange(int32_t len) { return static_cast<uint32_t>(len) - 2u <= 62u; }

// Walsh-Hadamard orders 1 to 13 pass, tested the same way.
inline bool orderInRange(int32_t order) { return static_cast<uint32_t>(order) - 1u <= 12u; }

}  // namespace tvk
