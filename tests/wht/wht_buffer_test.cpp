// The work buffer: the size query, the one allocation per call when the
// caller passes none, and independence from the buffer's content.
#include <gtest/gtest.h>

#include <limits>

#include "counting_allocator.h"
#include "wht_support.h"

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

    AllocatorLog& log = freshAllocatorLog();
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
    freshAllocatorLog();
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

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtBuffer, everyTypeAndOrder(), caseName);

}  // namespace
