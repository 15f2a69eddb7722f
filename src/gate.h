// The row index and the gate that sets it.  Private to the library; an
// internal test build of the same sources reaches them directly.
#pragma once

#include <stdint.h>

#ifndef TVK_GATE_VISIBLE
#define TVK_GATE_VISIBLE __attribute__((visibility("hidden")))
#endif

extern "C" {
extern TVK_GATE_VISIBLE uint32_t tvkJumpIndexForMergedDLL;
TVK_GATE_VISIBLE int tvkgenRunGate(void);
}
