// Length switches of the Hartley transform: a bad length fails before
// anything else is looked at; a good one tail-calls the Codelet of that
// length.
#include "bodies.h"

#define TVK_HARTLEY_SWITCH(TYPE)                                                                       \
    extern "C" TVK_INTERNAL tvkStatus u8_tvkgHartley_##TYPE(const tvk##TYPE* src, tvk##TYPE* dst,       \
                                                            int32_t len, int32_t flag) {               \
        using Codelet = tvkStatus (*)(const tvk##TYPE*, tvk##TYPE*, int32_t);                          \
        static constexpr Codelet kByLength[63] = {TVKGEN_DFT_LENGTHS(TVK_HARTLEY_ROW_##TYPE)};         \
        if (!tvk::lengthInRange(len)) return StatusSize;                                               \
        return kByLength[len - 2](src, dst, flag);                                                     \
    }

#define TVK_HARTLEY_ROW_32f(N) u8_tvkgHartley_##N##_32f,
#define TVK_HARTLEY_ROW_64f(N) u8_tvkgHartley_##N##_64f,

TVK_HARTLEY_SWITCH(32f)
TVK_HARTLEY_SWITCH(64f)
