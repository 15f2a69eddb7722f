/*
 * tvkgen.h - public interface of libtvkgenu8.
 *
 * Short fixed-size signal transforms: every transform length is one
 * straight-line function with its own constants.  A call takes a source
 * array, a destination array and a scale flag and returns a status; nothing
 * is kept between calls.  Usable from C (C99 or later) and C++.
 */
#ifndef TVKGEN_H
#define TVKGEN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- element types ------------------------------------------------------ */

typedef float  tvk32f;                          /* IEEE-754 binary32 */
typedef double tvk64f;                          /* IEEE-754 binary64 */
typedef struct { tvk32f re, im; } tvk32fc;      /* interleaved complex */
typedef struct { tvk64f re, im; } tvk64fc;

/* ---- status codes --------------------------------------------------------- */

typedef int32_t tvkStatus;

enum {
    StatusOk        = 0,    /* the transform was computed */
    StatusBadArg    = -5,   /* DCT-IV only: an argument is out of its range */
    StatusSize      = -6,   /* a length or order is outside the family's range */
    StatusNullPtr   = -8,   /* a required pointer is null */
    StatusScaleFlag = -16   /* the scale flag is not one of the four values */
};

/* ---- scale flags (one value, not a set of bits) ------------------------------
 *                    forward DFT   inverse DFT   WHT (self-inverse)
 *  ScaleDivFwdByN    1/N           1             1/N
 *  ScaleDivInvByN    1             1/N           1/N
 *  ScaleDivBySqrtN   1/sqrt(N)     1/sqrt(N)     1/sqrt(N)
 *  ScaleNoDiv        1             1             1
 */
enum {
    ScaleDivFwdByN  = 1,
    ScaleDivInvByN  = 2,
    ScaleDivBySqrtN = 4,
    ScaleNoDiv      = 8
};

/* ---- version record ----------------------------------------------------------- */

typedef struct {
    int32_t     major;
    int32_t     minor;
    int32_t     patch;
    int32_t     revision;
    char        target[4];      /* build prefix without its underscore, zero padded */
    const char* name;
    const char* version;
    const char* buildDate;
} tvkLibraryVersion;

/* Address of the library's constant version record; never write or free it. */
const tvkLibraryVersion* tvkgenGetLibVersion(void);

/* ---- length lists --------------------------------------------------------------
 * X-macros over the lengths and orders of the fixed-size families, so that a
 * caller can build its own tables of Codelets, e.g.
 *     #define ROW(N) tvkgDFTFwd_CToC_##N##_32fc,
 *     static const tvkDFTCodelet_32fc table[] = { TVKGEN_DFT_LENGTHS(ROW) };
 */
#define TVKGEN_DFT_LENGTHS(X) \
    X(2)  X(3)  X(4)  X(5)  X(6)  X(7)  X(8)  X(9)  X(10) X(11) X(12) X(13) \
    X(14) X(15) X(16) X(17) X(18) X(19) X(20) X(21) X(22) X(23) X(24) X(25) \
    X(26) X(27) X(28) X(29) X(30) X(31) X(32) X(33) X(34) X(35) X(36) X(37) \
    X(38) X(39) X(40) X(41) X(42) X(43) X(44) X(45) X(46) X(47) X(48) X(49) \
    X(50) X(51) X(52) X(53) X(54) X(55) X(56) X(57) X(58) X(59) X(60) X(61) \
    X(62) X(63) X(64)

#define TVKGEN_WHT_ORDERS(X) \
    X(1) X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(10) X(11) X(12) X(13)

/* ---- complex DFT, lengths 2 to 64 ------------------------------------------------
 * forward:  X[k] = s * sum_n x[n] * exp(-2*pi*i*n*k/N)
 * inverse:  X[k] = s * sum_n x[n] * exp(+2*pi*i*n*k/N)
 * Natural order on both sides.  src and dst may be the same array.  Any
 * alignment is accepted.  The tvk32fc bodies of lengths 9, 18, 25, 27, 45, 47,
 * 49, 50, 54, 59 and 60 may read up to 16 bytes past the end of src: keep
 * those bytes readable.
 */
typedef tvkStatus (*tvkDFTCodelet_32fc)(const tvk32fc* src, tvk32fc* dst, int32_t flag);
typedef tvkStatus (*tvkDFTCodelet_64fc)(const tvk64fc* src, tvk64fc* dst, int32_t flag);

#define TVKGEN_DECLARE_DFT_CODELETS(N)                                                   \
    tvkStatus tvkgDFTFwd_CToC_##N##_32fc(const tvk32fc* src, tvk32fc* dst, int32_t flag); \
    tvkStatus tvkgDFTFwd_CToC_##N##_64fc(const tvk64fc* src, tvk64fc* dst, int32_t flag); \
    tvkStatus tvkgDFTInv_CToC_##N##_32fc(const tvk32fc* src, tvk32fc* dst, int32_t flag); \
    tvkStatus tvkgDFTInv_CToC_##N##_64fc(const tvk64fc* src, tvk64fc* dst, int32_t flag);
TVKGEN_DFT_LENGTHS(TVKGEN_DECLARE_DFT_CODELETS)
#undef TVKGEN_DECLARE_DFT_CODELETS

/* Length switches: len outside 2..64 gives StatusSize before anything else is looked at. */
tvkStatus tvkgDFTFwd_CToC_32fc(const tvk32fc* src, tvk32fc* dst, int32_t len, int32_t flag);
tvkStatus tvkgDFTFwd_CToC_64fc(const tvk64fc* src, tvk64fc* dst, int32_t len, int32_t flag);
tvkStatus tvkgDFTInv_CToC_32fc(const tvk32fc* src, tvk32fc* dst, int32_t len, int32_t flag);
tvkStatus tvkgDFTInv_CToC_64fc(const tvk64fc* src, tvk64fc* dst, int32_t len, int32_t flag);

/* ---- real DFT, lengths 2 to 64: packed spectra in three layouts -----------------
 * forward:  X[k] = s * sum_n x[n] * exp(-2*pi*i*n*k/N), bins 0 to N/2 stored;
 * inverse:  x[n] = s * sum_k c[k] * (Re X[k] cos(2*pi*n*k/N) - Im X[k] sin(2*pi*n*k/N))
 *           over k = 0..N/2, with c[k] = 1 for bin 0 and (N even) bin N/2, 2 otherwise.
 * Layouts of the N/2 + 1 bins (Rk = Re X[k], Ik = Im X[k], K = (N-1)/2):
 *   CCS   R0, 0, R1, I1, ..., RK, IK [, R(N/2), 0]   N + 2 (even N) or N + 1 elements
 *   Pack  R0, R1, I1, ..., RK, IK [, R(N/2)]         N elements
 *   Perm  R0 [, R(N/2)], R1, I1, ..., RK, IK         N elements (= Pack for odd N)
 * The zeros of CCS are stored as +0 whatever the input; the CCS inverse never
 * reads them.  Scalar bodies: any alignment, src may equal dst (for CCS the
 * destination of the forward has the layout's length), nothing is read
 * past the source.
 */
typedef tvkStatus (*tvkRealCodelet_32f)(const tvk32f* src, tvk32f* dst, int32_t flag);
typedef tvkStatus (*tvkRealCodelet_64f)(const tvk64f* src, tvk64f* dst, int32_t flag);

#define TVKGEN_DECLARE_REAL_CODELETS_OF(N, T)                                         \
    tvkStatus tvkgDFTFwd_RToCCS_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag);  \
    tvkStatus tvkgDFTFwd_RToPack_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag); \
    tvkStatus tvkgDFTFwd_RToPerm_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag); \
    tvkStatus tvkgDFTInv_CCSToR_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag);  \
    tvkStatus tvkgDFTInv_PackToR_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag); \
    tvkStatus tvkgDFTInv_PermToR_##N##_##T(const tvk##T* src, tvk##T* dst, int32_t flag);
#define TVKGEN_DECLARE_REAL_CODELETS(N) TVKGEN_DECLARE_REAL_CODELETS_OF(N, 32f) TVKGEN_DECLARE_REAL_CODELETS_OF(N, 64f)
TVKGEN_DFT_LENGTHS(TVKGEN_DECLARE_REAL_CODELETS)
#undef TVKGEN_DECLARE_REAL_CODELETS
#undef TVKGEN_DECLARE_REAL_CODELETS_OF

/* Length switches: len outside 2..64 gives StatusSize before anything else is looked at. */
#define TVKGEN_DECLARE_REAL_SWITCHES(T)                                                         \
    tvkStatus tvkgDFTFwd_RToCCS_##T(const tvk##T* src, tvk##T* dst, int32_t len, int32_t flag);  \
    tvkStatus tvkgDFTFwd_RToPack_##T(const tvk##T* src, tvk##T* dst, int32_t len, int32_t flag); \
    tvkStatus tvkgDFTFwd_RToPerm_##T(const tvk##T* src, tvk##T* dst, int32_t len, int32_t flag); \
    tvkStatus tvkgDFTInv_CCSToR_##T(const tvk##T* src, tvk##T* dst, int32_t len, int32_t flag);  \
    tvkStatus tvkgDFTInv_PackToR_##T(const tvk##T* src, tvk##T* dst, int32_t len, int32_t flag); \
    tvkStatus tvkgDFTInv_PermToR_##T(const tvk##T* src, tvk##T* dst, int32_t len, int32_t flag);
TVKGEN_DECLARE_REAL_SWITCHES(32f)
TVKGEN_DECLARE_REAL_SWITCHES(64f)
#undef TVKGEN_DECLARE_REAL_SWITCHES

/* ---- discrete Hartley transform, lengths 2 to 64 ---------------------------------
 * y[k] = s * sum_n x[n] * cas(2*pi*n*k/N), cas(t) = cos(t) + sin(t), natural
 * order; its own inverse up to N, so ScaleDivFwdByN and ScaleDivInvByN both
 * divide by N.  Scalar bodies: any alignment, src may equal dst, nothing is
 * read past the source.
 */
typedef tvkStatus (*tvkHartleyCodelet_32f)(const tvk32f* src, tvk32f* dst, int32_t flag);
typedef tvkStatus (*tvkHartleyCodelet_64f)(const tvk64f* src, tvk64f* dst, int32_t flag);

#define TVKGEN_DECLARE_HARTLEY_CODELETS(N)                                         \
    tvkStatus tvkgHartley_##N##_32f(const tvk32f* src, tvk32f* dst, int32_t flag); \
    tvkStatus tvkgHartley_##N##_64f(const tvk64f* src, tvk64f* dst, int32_t flag);
TVKGEN_DFT_LENGTHS(TVKGEN_DECLARE_HARTLEY_CODELETS)
#undef TVKGEN_DECLARE_HARTLEY_CODELETS

/* Length switches: len outside 2..64 gives StatusSize before anything else is looked at. */
tvkStatus tvkgHartley_32f(const tvk32f* src, tvk32f* dst, int32_t len, int32_t flag);
tvkStatus tvkgHartley_64f(const tvk64f* src, tvk64f* dst, int32_t len, int32_t flag);

/* ---- Walsh-Hadamard transform, orders 1 to 13 ------------------------------------
 * N = 2^order;  y[k] = s * sum_n (-1)^popcount(n & k) * x[n], natural order.
 * Computed stage by stage (pairs at distance 1, 2, 4, ...), then scaled, so
 * results are reproducible bit for bit.  src and dst may be the same array;
 * any alignment is accepted.  Orders 1 to 7 ignore `buffer`.  Orders 8 to 13
 * use it as a work buffer of tvkgWHTGetBufferSize_* bytes, aligned to 16
 * bytes and not overlapping src or dst; with a null buffer each call
 * allocates one from tvkMalloc and releases it before returning.
 */
typedef tvkStatus (*tvkWHTCodelet_32f)(const tvk32f* src, tvk32f* dst, int32_t flag, uint8_t* buffer);
typedef tvkStatus (*tvkWHTCodelet_64f)(const tvk64f* src, tvk64f* dst, int32_t flag, uint8_t* buffer);

#define TVKGEN_DECLARE_WHT_CODELETS(M)                                                          \
    tvkStatus tvkgWHT_##M##_32f(const tvk32f* src, tvk32f* dst, int32_t flag, uint8_t* buffer); \
    tvkStatus tvkgWHT_##M##_64f(const tvk64f* src, tvk64f* dst, int32_t flag, uint8_t* buffer);
TVKGEN_WHT_ORDERS(TVKGEN_DECLARE_WHT_CODELETS)
#undef TVKGEN_DECLARE_WHT_CODELETS

/* Order switches: order outside 1..13 gives StatusSize before anything else is looked at. */
tvkStatus tvkgWHT_32f(const tvk32f* src, tvk32f* dst, int32_t order, int32_t flag, uint8_t* buffer);
tvkStatus tvkgWHT_64f(const tvk64f* src, tvk64f* dst, int32_t order, int32_t flag, uint8_t* buffer);

/* Work buffer bytes of an order into *size (0 for orders 1 to 7).  A null
 * size gives StatusNullPtr, then a bad order StatusSize; *size is written only
 * on success. */
tvkStatus tvkgWHTGetBufferSize_32f(int32_t order, int32_t* size);
tvkStatus tvkgWHTGetBufferSize_64f(int32_t order, int32_t* size);

/* ---- DCT-IV, power-of-two lengths 2 to 2^26 (tvk32f) or 2^25 (tvk64f) ----------
 * y[k] = sum_j x[j] * cos(pi * (2j + 1) * (2k + 1) / (4n)), k = 0 .. n-1.
 * No scale: applying it twice gives n/2 times the input.
 *
 * A context lives in one block that the caller owns: ask its size with
 * GetSize, pass a block of at least that many bytes (any alignment) to Init,
 * transform as often as needed, then drop the block; or let InitAlloc take
 * the block from tvkMalloc and release it with Free.  A context holds
 * pointers into its block and can't be moved or copied.  Lengths 2 to 32
 * never write their context, so threads may share one; longer lengths keep
 * scratch in it, so each thread needs its own.  src and dst may be the same
 * array and need no alignment.
 *
 * GetSize: a null pSize gives StatusNullPtr, then a bad length StatusSize;
 * *pSize is written only on success.  Init: StatusNullPtr for a null ppSpec
 * or block, StatusSize for a bad length with *ppSpec untouched.  InitAlloc:
 * StatusNullPtr for a null ppSpec or when no memory was had, StatusSize for a
 * bad length (nothing allocated).  DCT4: StatusNullPtr if any pointer is null,
 * StatusBadArg for a record that is no context.  Free: StatusNullPtr for null.
 * Lengths 2^k + 1 (k >= 5 for tvk32f, k >= 3 for tvk64f) are accepted and run,
 * but their results are not a DCT-IV.
 */
typedef struct DCT4Spec DCT4Spec;

tvkStatus tvkgDCT4GetSize_32f(int32_t len, int32_t* pSize);
tvkStatus tvkgDCT4GetSize_64f(int32_t len, int32_t* pSize);
tvkStatus tvkgDCT4Init_32f(DCT4Spec** ppSpec, int32_t len, uint8_t* pBlock);
tvkStatus tvkgDCT4Init_64f(DCT4Spec** ppSpec, int32_t len, uint8_t* pBlock);
tvkStatus tvkgDCT4InitAlloc_32f(DCT4Spec** ppSpec, int32_t len);
tvkStatus tvkgDCT4InitAlloc_64f(DCT4Spec** ppSpec, int32_t len);
tvkStatus tvkgDCT4_32f(const tvk32f* pSrc, tvk32f* pDst, const DCT4Spec* pSpec);
tvkStatus tvkgDCT4_64f(const tvk64f* pSrc, tvk64f* pDst, const DCT4Spec* pSpec);
tvkStatus tvkgDCT4Free_32f(DCT4Spec* pSpec);
tvkStatus tvkgDCT4Free_64f(DCT4Spec* pSpec);

#ifdef __cplusplus
}
#endif

#endif /* TVKGEN_H */
