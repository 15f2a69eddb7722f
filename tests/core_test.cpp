// The libtvkcore stand-in: feature detection and the aligned allocator.
#include <cstdint>
#include <cstring>
#include <set>

#include <gtest/gtest.h>

#include "tvkcore.h"

namespace {

TEST(Core, MallocAlignsToSixtyFourBytes) {
    for (int32_t size : {0, 1, 7, 16, 63, 64, 65, 1000, 73728, 1 << 20}) {
        void* block = tvkMalloc(size);
        ASSERT_NE(block, nullptr) << size;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u) << size;
        std::memset(block, 0xA5, static_cast<size_t>(size));  // the whole block is usable
        tvkFree(block);
    }
}

TEST(Core, MallocRefusesNegativeSizes) {
    for (int32_t size : {-1, -64, INT32_MIN}) EXPECT_EQ(tvkMalloc(size), nullptr) << size;
}

TEST(Core, ZeroSizedBlocksAreDistinct) {
    void* a = tvkMalloc(0);
    void* b = tvkMalloc(0);
    EXPECT_NE(a, b);
    tvkFree(a);
    tvkFree(b);
}

TEST(Core, FreeAcceptsNull) { tvkFree(nullptr); }

TEST(Core, EnabledFeaturesAreDetectedOnes) {
    uint64_t detected = 0;
    uint32_t leaf1[4] = {};
    EXPECT_EQ(tvkGetCpuFeatures(&detected, leaf1), 0);
    EXPECT_NE(leaf1[0], 0u);  // family, model and stepping are never all zero
    const uint64_t enabled = tvkGetEnabledCpuFeatures();
    EXPECT_EQ(enabled & ~detected, 0u);
    // Every x86-64 processor has SSE and SSE2.
    EXPECT_EQ(detected & (TVK_CPU_SSE | TVK_CPU_SSE2), TVK_CPU_SSE | TVK_CPU_SSE2);
    EXPECT_EQ(tvkGetCpuFeatures(nullptr, nullptr), 0);
}

}  // namespace
