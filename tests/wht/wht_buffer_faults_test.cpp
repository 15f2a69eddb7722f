// What the buffered orders do with a buffer they can't use: none of it is
// detected.  A misaligned buffer faults in the processor, and an allocation
// that fails is written through; the process dies in both cases, with no
// status.  Callers avoid both by passing a 16-byte aligned buffer of the
// queried size.
#include <gtest/gtest.h>

#include "recording_allocator.h"
#include "wht_support.h"

using namespace tvktest;
using namespace whttest;

namespace {

TEST(WhtBufferFaultsDeathTest, MisalignedBufferIsNotCheckedAndFaults) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::vector<float> x = randomData<float>(8, 1);
    std::vector<float> y(x.size());
    std::vector<double> storage(bufferBytes<float>(8) / sizeof(double) + 2);
    uint8_t* misaligned = reinterpret_cast<uint8_t*>(storage.data()) + 4;
    EXPECT_DEATH(tvkgWHT_8_32f(x.data(), y.data(), ScaleNoDiv, misaligned), "");
    uint8_t* aligned = reinterpret_cast<uint8_t*>(storage.data() + (reinterpret_cast<uintptr_t>(storage.data()) % 16 ? 1 : 0));
    EXPECT_EQ(tvkgWHT_8_32f(x.data(), y.data(), ScaleNoDiv, aligned), StatusOk);
}

TEST(WhtBufferFaultsDeathTest, FailedAllocationIsNotCheckedAndFaults) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::vector<double> x = randomData<double>(13, 2);
    std::vector<double> y(x.size());
    EXPECT_DEATH(
        {
            freshAllocationLog().exhausted = true;
            tvkgWHT_13_64f(x.data(), y.data(), ScaleNoDiv, nullptr);
        },
        "");
    // The same call with memory to spare allocates, works and frees.
    AllocationLog& log = freshAllocationLog();
    EXPECT_EQ(tvkgWHT_13_64f(x.data(), y.data(), ScaleNoDiv, nullptr), StatusOk);
    EXPECT_EQ(log.sizes.size(), 1u);
    EXPECT_EQ(log.freed.size(), 1u);
}

}  // namespace
