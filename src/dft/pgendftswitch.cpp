// Length switches of the complex DFT: a bad length fails before anything else
// is looked at; a good one tail-calls the Codelet of that length.
#include "bodies.h"

#define TVK_DFT_SWITCH(DIR, TYPE)                                                                        \
    extern "C" TVK_INTERNAL tvkStatus u8_tvkgDFT##DIR##_CToC_##TYPE(const tvk##TYPE* src, tvk##TYPE* dst, \
                                                                    int32_t len, int32_t flag) {         \
        using Codelet = tvkStatus (*)(const tvk##TYPE*, tvk##TYPE*, int32_t);                          \
        static constexpr Codelet kByLength[63] = {TVKGEN_DFT_LENGTHS(TVK_DFT_ROW_##DIR##_##TYPE)};     \
        if (!tvk::lengthInRange(len)) return StatusSize;                                                \
        return kByLength[len - 2](src, dst, flag);                                                      \
    }

#define TVK_DFT_ROW_Fwd_32fc(N) u8_tvkgDFTFwd_CToC_##N##_32fc,
#define TVK_DFT_ROW_Fwd_64fc(N) u8_tvkgDFTFwd_CToC_##N##_64fc,
#define TVK_DFT_ROW_Inv_32fc(N) u8_tvkgDFTInv_CToC_##N##_32fc,
#define TVK_DFT_ROW_Inv_64fc(N) u8_tvkgDFTInv_CToC_##N##_64fc,

TVK_DFT_SWITCH(Fwd, 32fc)
TVK_DFT_SWITCH(Fwd, 64fc)
TVK_DFT_SWITCH(Inv, 32fc)
TVK_DFT_SWITCH(Inv, 64fc)
