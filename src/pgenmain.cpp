// The processor gate: run once by the loader, it fixes the row index that
// every stub reads.  Both entries of every row hold the same u8_ body in this
// build; a second build would fill the second entries and change nothing here.
#include "gate.h"
#include "tvkcore.h"

extern "C" {

TVK_GATE_VISIBLE uint32_t tvkJumpIndexForMergedDLL = 0;

TVK_GATE_VISIBLE int tvkgenRunGate(void) {
    tvkGetCpuFeatures(nullptr, nullptr);  // a fixed first step; its answer is not used
    const uint64_t mask = tvkGetEnabledCpuFeatures();
    constexpr uint64_t kRow1 = TVK_CPU_SSSE3 | TVK_CPU_MOVBE;
    tvkJumpIndexForMergedDLL = (mask & kRow1) == kRow1 ? 1 : 0;
    return 1;
}

}

namespace {

__attribute__((constructor)) void tvkgenLoad() { tvkgenRunGate(); }

// Nothing is allocated at load, so nothing is released at unload.
__attribute__((destructor)) void tvkgenUnload() {}

}  // namespace
