// Results of every order, type, flag and path against the plain in-order
// stage sequence, and the entry checks.
#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "wht_support.h"

using namespace whttest;

namespace {

constexpr int32_t kFlags[] = {ScaleDivFwdByN, ScaleDivInvByN, ScaleDivBySqrtN, ScaleNoDiv};

// Room for N elements at a chosen byte offset from a 16-byte boundary.
template <class T>
class Misaligned {
public:
    Misaligned(size_t count, size_t offset) : raw_(count * sizeof(T) + 32) {
        const uintptr_t base = (reinterpret_cast<uintptr_t>(raw_.data()) + 15) & ~uintptr_t{15};
        at_ = reinterpret_cast<T*>(base + offset);
        count_ = count;
    }
    T* get() const { return at_; }
    void fill(const std::vector<T>& x) const { std::memcpy(at_, x.data(), x.size() * sizeof(T)); }
    std::vector<T> read() const {
        std::vector<T> x(count_);
        std::memcpy(x.data(), at_, count_ * sizeof(T));
        return x;
    }

private:
    std::vector<unsigned char> raw_;
    T* at_;
    size_t count_;
};

class WhtOrder : public ByTypeAndOrder {};

template <class T>
void matchesReferenceUnderEveryFlag(int order) {
    const std::vector<T> x = randomData<T>(order, 11u * order);
    std::vector<uint8_t> buffer(bufferBytes<T>(order) + 16);
    uint8_t* aligned = buffer.data() + (-reinterpret_cast<uintptr_t>(buffer.data()) & 15);
    for (const int32_t flag : kFlags) {
        SCOPED_TRACE(flag);
        const std::vector<T> want = reference(x, scaleOf<T>(order, flag));
        std::vector<T> withBuffer(x.size()), allocating(x.size());
        ASSERT_EQ(transform(x.data(), withBuffer.data(), order, flag, aligned), StatusOk);
        ASSERT_EQ(transform(x.data(), allocating.data(), order, flag, nullptr), StatusOk);
        EXPECT_TRUE(sameBits(withBuffer, want));
        EXPECT_TRUE(sameBits(allocating, want));
    }
}

TEST_P(WhtOrder, MatchesInOrderStagesUnderEveryFlag) {
    single() ? matchesReferenceUnderEveryFlag<float>(order()) : matchesReferenceUnderEveryFlag<double>(order());
}

// Every mix of source and destination offsets, and in place at every offset,
// with an aligned buffer.
template <class T>
void sameBitsAtEveryOffset(int order) {
    const std::vector<T> x = randomData<T>(order, 7u * order);
    const std::vector<T> want = reference(x, scaleOf<T>(order, ScaleDivBySqrtN));
    std::vector<double> buffer(bufferBytes<T>(order) / sizeof(double));
    auto* work = reinterpret_cast<uint8_t*>(buffer.data());
    for (size_t srcOffset = 0; srcOffset < 16; ++srcOffset) {
        const Misaligned<T> src(x.size(), srcOffset);
        src.fill(x);
        for (size_t dstOffset = 0; dstOffset < 16; ++dstOffset) {
            const Misaligned<T> dst(x.size(), dstOffset);
            ASSERT_EQ(transform(src.get(), dst.get(), order, ScaleDivBySqrtN, work), StatusOk);
            ASSERT_TRUE(sameBits(dst.read(), want)) << "src +" << srcOffset << ", dst +" << dstOffset;
        }
        ASSERT_EQ(transform(src.get(), src.get(), order, ScaleDivBySqrtN, work), StatusOk);
        ASSERT_TRUE(sameBits(src.read(), want)) << "in place at +" << srcOffset;
    }
}

TEST_P(WhtOrder, SameBitsAtEveryOffsetAndInPlace) {
    single() ? sameBitsAtEveryOffset<float>(order()) : sameBitsAtEveryOffset<double>(order());
}

// Guards the reference itself: natural (Sylvester) order, no permutation.
template <class T>
void impulsesGiveParitySigns(int order) {
    const size_t n = size_t{1} << order;
    for (const size_t at : {size_t{0}, size_t{1}, n / 2 + 1, n - 1}) {
        std::vector<T> x(n), y(n);
        x[at % n] = 1;
        ASSERT_EQ(transform(x.data(), y.data(), order, ScaleNoDiv, nullptr), StatusOk);
        for (size_t k = 0; k < n; ++k)
            ASSERT_EQ(y[k], std::popcount((at % n) & k) % 2 ? -1 : 1) << "impulse " << at << ", output " << k;
    }
}

TEST_P(WhtOrder, ImpulsesGiveParitySigns) {
    single() ? impulsesGiveParitySigns<float>(order()) : impulsesGiveParitySigns<double>(order());
}

// Failed checks return before anything is read, written or allocated, in the
// order null source, null destination, flag, on both paths.
template <class T>
void failuresLeaveDestination(int order) {
    const std::vector<T> x = randomData<T>(order, 3);
    std::vector<T> dst(x.size(), T(42));
    const std::vector<T> untouched = dst;
    const Misaligned<T> offSource(x.size(), 4);
    offSource.fill(x);
    for (const T* src : {x.data(), static_cast<const T*>(offSource.get())}) {
        for (const int32_t flag : {0, 3, 5, 6, 7, 9, 12, -1, INT_MIN})
            EXPECT_EQ(transform(src, dst.data(), order, flag, nullptr), StatusScaleFlag) << flag;
        EXPECT_EQ(transform(src, nullptr, order, 3, nullptr), StatusNullPtr);
    }
    EXPECT_EQ(transform(static_cast<const T*>(nullptr), dst.data(), order, 3, nullptr), StatusNullPtr);
    EXPECT_EQ(transform(static_cast<const T*>(nullptr), nullptr, order, ScaleNoDiv, nullptr), StatusNullPtr);
    EXPECT_TRUE(sameBits(dst, untouched));
}

TEST_P(WhtOrder, FailuresLeaveDestinationUntouched) {
    single() ? failuresLeaveDestination<float>(order()) : failuresLeaveDestination<double>(order());
}

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtOrder, everyTypeAndOrder(), caseName);

TEST(WhtSwitch, BadOrderWinsOverEveryOtherError) {
    for (const int32_t order : {0, 14, -1, 99, INT_MIN, INT_MAX}) {
        EXPECT_EQ(tvkgWHT_32f(nullptr, nullptr, order, 0, nullptr), StatusSize) << order;
        EXPECT_EQ(tvkgWHT_64f(nullptr, nullptr, order, 0, nullptr), StatusSize) << order;
    }
}

// The switch leads each order to the Codelet of that name.
TEST(WhtSwitch, HandsOnToTheCodeletOfTheOrder) {
#define WHT_ROW_32F(M) tvkgWHT_##M##_32f,
#define WHT_ROW_64F(M) tvkgWHT_##M##_64f,
    const tvkWHTCodelet_32f codelets32f[] = {TVKGEN_WHT_ORDERS(WHT_ROW_32F)};
    const tvkWHTCodelet_64f codelets64f[] = {TVKGEN_WHT_ORDERS(WHT_ROW_64F)};
#undef WHT_ROW_32F
#undef WHT_ROW_64F
    for (int order = 1; order <= 13; ++order) {
        const std::vector<float> x32 = randomData<float>(order, order);
        const std::vector<double> x64 = randomData<double>(order, order);
        std::vector<float> direct32(x32.size()), switched32(x32.size());
        std::vector<double> direct64(x64.size()), switched64(x64.size());
        ASSERT_EQ(codelets32f[order - 1](x32.data(), direct32.data(), ScaleNoDiv, nullptr), StatusOk);
        ASSERT_EQ(codelets64f[order - 1](x64.data(), direct64.data(), ScaleNoDiv, nullptr), StatusOk);
        ASSERT_EQ(tvkgWHT_32f(x32.data(), switched32.data(), order, ScaleNoDiv, nullptr), StatusOk);
        ASSERT_EQ(tvkgWHT_64f(x64.data(), switched64.data(), order, ScaleNoDiv, nullptr), StatusOk);
        EXPECT_TRUE(sameBits(direct32, switched32)) << order;
        EXPECT_TRUE(sameBits(direct64, switched64)) << order;
    }
}

}  // namespace
