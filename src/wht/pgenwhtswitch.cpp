// Order switches and buffer size queries of the Walsh-Hadamard family.
#include "bodies.h"

namespace {

// Work buffer bytes by order: none up to order 7, the main image for the
// two-pass orders, and the image plus one chunk for the three-pass orders.
constexpr int32_t kBufferBytes32f[13] = {0, 0, 0, 0, 0, 0, 0, 1024, 2048, 4096, 8192, 18432, 34816};
constexpr int32_t kBufferBytes64f[13] = {0, 0, 0, 0, 0, 0, 0, 2048, 4096, 8192, 18432, 34816, 73728};

tvkStatus bufferSize(const int32_t (&bytes)[13], int32_t order, int32_t* size) {
    if (!size) return StatusNullPtr;
    if (!tvk::orderInRange(order)) return StatusSize;
    *size = bytes[order - 1];
    return StatusOk;
}

}  // namespace

#define TVK_WHT_SWITCH(TYPE)                                                                               \
    extern "C" TVK_INTERNAL tvkStatus u8_tvkgWHT_##TYPE(const tvk##TYPE* src, tvk##TYPE* dst, int32_t order, \
                                                       int32_t flag, uint8_t* buffer) {                      \
        using Codelet = tvkStatus (*)(const tvk##TYPE*, tvk##TYPE*, int32_t, uint8_t*);                    \
        static constexpr Codelet kByOrder[13] = {TVKGEN_WHT_ORDERS(TVK_WHT_ROW_##TYPE)};                   \
        if (!tvk::orderInRange(order)) return StatusSize;                                                  \
        return kByOrder[order - 1](src, dst, flag, buffer);                                                \
    }                                                                                                      \
    extern "C" TVK_INTERNAL tvkStatus u8_tvkgWHTGetBufferSize_##TYPE(int32_t order, int32_t* size) {      \
        return bufferSize(kBufferBytes##TYPE, order, size);                                                \
    }

#define TVK_WHT_ROW_32f(M) u8_tvkgWHT_##M##_32f,
#define TVK_WHT_ROW_64f(M) u8_tvkgWHT_##M##_64f,

TVK_WHT_SWITCH(32f)
TVK_WHT_SWITCH(64f)
