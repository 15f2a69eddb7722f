// The work buffer: the size query, the one allocation per call when the
// caller passes none, and independence from the buffer's content and place.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "recording_allocator.h"
#include "tvkcore.h"
#include "wht_support.h"

using namespace tvktest;
using namespace whttest;

namespace {

TEST(WhtBufferSize, GivesTheLayoutBytesOfEveryOrder) {
    const int32_t bytes32f[13] = {0, 0, 0, 0, 0, 0, 0, 1024, 2048, 4096, 8192, 18432, 34816};
    const int32_t bytes64f[13] = {0, 0, 0, 0, 0, 0, 0, 2048, 4096, 8192, 18432, 34816, 73728};
    for (int order = 1; order <= 13; ++order) {
        int32_t size32f = -1, size64f = -1;
        ASSERT_EQ(tvkgWHTGetBufferSize_32f(order, &size32f), StatusOk);
        ASSERT_EQ(tvkgWHTGetBufferSize_64f(order, &size64f), StatusOk);
        EXPECT_EQ(size32f, bytes32f[order - 1]) << order;
        EXPECT_EQ(size64f, bytes64f[order - 1]) << order;
    }
}

TEST(WhtBufferSize, NullSizeWinsAndBadOrderLeavesSize) {
    EXPECT_EQ(tvkgWHTGetBufferSize_32f(99, nullptr), StatusNullPtr);
    EXPECT_EQ(tvkgWHTGetBufferSize_64f(8, nullptr), StatusNullPtr);
    for (const int32_t order : {0, 14, 99, -1}) {
        int32_t size = 12345;
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, &size), StatusSize);
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, &size), StatusSize);
        EXPECT_EQ(size, 12345);
    }
}

class WhtBuffer : public ByTypeAndOrder {};

// A null buffer: exactly one block of the queried size, released before the
// call returns.  A caller's buffer, or a failed check: no allocation at all.
template <class T>
void allocatesOncePerCallWithoutBuffer(int order) {
    const std::vector<T> x = randomData<T>(order, 5);
    std::vector<T> y(x.size());
    const int32_t bytes = bufferBytes<T>(order);

    AllocationLog& log = freshAllocationLog();
    ASSERT_EQ(transform(x.data(), y.data(), order, ScaleNoDiv, nullptr), StatusOk);
    if (bytes == 0) {
        EXPECT_TRUE(log.sizes.empty() && log.freed.empty()) << "orders without a buffer never allocate";
        return;
    }
    ASSERT_EQ(log.sizes.size(), 1u);
    EXPECT_EQ(log.sizes[0], bytes);
    ASSERT_EQ(log.freed.size(), 1u);
    EXPECT_EQ(log.freed[0], log.blocks[0]);

    std::vector<double> buffer(bytes / sizeof(double));
    freshAllocationLog();
    ASSERT_EQ(transform(x.data(), y.data(), order, ScaleNoDiv, reinterpret_cast<uint8_t*>(buffer.data())), StatusOk);
    EXPECT_EQ(transform(static_cast<const T*>(nullptr), y.data(), order, ScaleNoDiv, nullptr), StatusNullPtr);
    EXPECT_EQ(transform(x.data(), nullptr, order, ScaleNoDiv, nullptr), StatusNullPtr);
    EXPECT_EQ(transform(x.data(), y.data(), order, 3, nullptr), StatusScaleFlag);
    EXPECT_TRUE(log.sizes.empty() && log.freed.empty());
}

TEST_P(WhtBuffer, AllocatesOncePerCallOnlyWithoutBuffer) {
    single() ? allocatesOncePerCallWithoutBuffer<float>(order())
             : allocatesOncePerCallWithoutBuffer<double>(order());
}

// The buffer's content on entry does not matter; orders 1 to 7 never touch
// it, so even an invalid address is accepted there.
template <class T>
void bufferContentHasNoEffect(int order) {
    const std::vector<T> x = randomData<T>(order, 9);
    const std::vector<T> want = reference(x, scaleOf<T>(order, ScaleDivFwdByN));
    std::vector<T> y(x.size());
    const int32_t bytes = bufferBytes<T>(order);
    std::vector<T> nans(bytes / sizeof(T) + 1, std::numeric_limits<T>::quiet_NaN());
    uint8_t* buffer = bytes ? reinterpret_cast<uint8_t*>(nans.data()) : reinterpret_cast<uint8_t*>(uintptr_t{1});
    ASSERT_EQ(transform(x.data(), y.data(), order, ScaleDivFwdByN, buffer), StatusOk);
    EXPECT_TRUE(sameBits(y, want));
}

TEST_P(WhtBuffer, ContentOnEntryHasNoEffect) {
    single() ? bufferContentHasNoEffect<float>(order()) : bufferContentHasNoEffect<double>(order());
}

// The placement docs/walsh-hadamard.md recommends for speed: the buffer
// 1 KiB past dst modulo 2 KiB, cut from a block 2 KiB larger than the query.
uint8_t* placedBuffer(uint8_t* block, const void* dst) {
    uintptr_t gap = ((uintptr_t)dst + 1024 - (uintptr_t)block) % 2048;
    return block + (gap & ~(uintptr_t)15);
}

// Wherever dst lies, that buffer stays 16-byte aligned and inside its block
// (the overrun would show in the guard bytes), and the bits are the same.
template <class T>
void placementHasNoEffect(int order) {
    const std::vector<T> x = randomData<T>(order, 13);
    const std::vector<T> want = reference(x, scaleOf<T>(order, ScaleNoDiv));
    const int32_t bytes = bufferBytes<T>(order);
    std::vector<T> room(x.size() + 2048);
    for (size_t offset : {0, 1, 2, 3, 16, 100, 256, 1000, 1024, 2047}) {
        T* dst = room.data() + offset;
        uint8_t* block = static_cast<uint8_t*>(tvkMalloc(bytes + 2048 + 64));
        std::memset(block, 0x5a, bytes + 2048 + 64);
        uint8_t* buffer = placedBuffer(block, dst);
        ASSERT_EQ(reinterpret_cast<uintptr_t>(buffer) % 16, 0u) << "dst offset " << offset;
        ASSERT_EQ(transform(x.data(), dst, order, ScaleNoDiv, buffer), StatusOk);
        EXPECT_TRUE(sameBits(std::vector<T>(dst, dst + x.size()), want)) << "dst offset " << offset;
        for (int i = bytes + 2048; i < bytes + 2048 + 64; ++i) ASSERT_EQ(block[i], 0x5a) << "dst offset " << offset;
        tvkFree(block);
    }
}

TEST_P(WhtBuffer, PlacementHasNoEffect) {
    single() ? placementHasNoEffect<float>(order()) : placementHasNoEffect<double>(order());
}

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtBuffer, everyTypeAndOrder(), caseName);

}  // namespace
