// Length switches of the real DFT: a bad length fails before anything else
// is looked at; a good one tail-calls the Codelet of that length.
#include "bodies.h"

#define TVK_REAL_SWITCH(NAME, TYPE)                                                                       \
    extern "C" TVK_INTERNAL tvkStatus u8_tvkg##NAME##_##TYPE(const tvk##TYPE* src, tvk##TYPE* dst,        \
                                                             int32_t len, int32_t flag) {                \
        using Codelet = tvkStatus (*)(const tvk##TYPE*, tvk##TYPE*, int32_t);                            \
        static constexpr Codelet kByLength[63] = {TVKGEN_DFT_LENGTHS(TVK_REAL_ROW_##NAME##_##TYPE)};     \
        if (!tvk::lengthInRange(len)) return StatusSize;                                                 \
        return kByLength[len - 2](src, dst, flag);                                                       \
    }

#define TVK_REAL_ROW_DFTFwd_RToCCS_32f(N) u8_tvkgDFTFwd_RToCCS_##N##_32f,
#define TVK_REAL_ROW_DFTFwd_RToCCS_64f(N) u8_tvkgDFTFwd_RToCCS_##N##_64f,
#define TVK_REAL_ROW_DFTFwd_RToPack_32f(N) u8_tvkgDFTFwd_RToPack_##N##_32f,
#define TVK_REAL_ROW_DFTFwd_RToPack_64f(N) u8_tvkgDFTFwd_RToPack_##N##_64f,
#define TVK_REAL_ROW_DFTFwd_RToPerm_32f(N) u8_tvkgDFTFwd_RToPerm_##N##_32f,
#define TVK_REAL_ROW_DFTFwd_RToPerm_64f(N) u8_tvkgDFTFwd_RToPerm_##N##_64f,
#define TVK_REAL_ROW_DFTInv_CCSToR_32f(N) u8_tvkgDFTInv_CCSToR_##N##_32f,
#define TVK_REAL_ROW_DFTInv_CCSToR_64f(N) u8_tvkgDFTInv_CCSToR_##N##_64f,
#define TVK_REAL_ROW_DFTInv_PackToR_32f(N) u8_tvkgDFTInv_PackToR_##N##_32f,
#define TVK_REAL_ROW_DFTInv_PackToR_64f(N) u8_tvkgDFTInv_PackToR_##N##_64f,
#define TVK_REAL_ROW_DFTInv_PermToR_32f(N) u8_tvkgDFTInv_PermToR_##N##_32f,
#define TVK_REAL_ROW_DFTInv_PermToR_64f(N) u8_tvkgDFTInv_PermToR_##N##_64f,

TVK_REAL_SWITCH(DFTFwd_RToCCS, 32f)
TVK_REAL_SWITCH(DFTFwd_RToCCS, 64f)
TVK_REAL_SWITCH(DFTFwd_RToPack, 32f)
TVK_REAL_SWITCH(DFTFwd_RToPack, 64f)
TVK_REAL_SWITCH(DFTFwd_RToPerm, 32f)
TVK_REAL_SWITCH(DFTFwd_RToPerm, 64f)
TVK_REAL_SWITCH(DFTInv_CCSToR, 32f)
TVK_REAL_SWITCH(DFTInv_CCSToR, 64f)
TVK_REAL_SWITCH(DFTInv_PackToR, 32f)
TVK_REAL_SWITCH(DFTInv_PackToR, 64f)
TVK_REAL_SWITCH(DFTInv_PermToR, 32f)
TVK_REAL_SWITCH(DFTInv_PermToR, 64f)
