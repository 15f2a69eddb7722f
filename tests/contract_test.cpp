// The call contract of the complex DFT entries: status codes and which error
// wins, a failed call leaves the destination alone, alignment and in-place use
// never change a bit, and nothing outside the destination is written.
#include <climits>

#include "dft_support.h"

using namespace tvktest;

namespace {

constexpr int kBadLengths[] = {0, 1, -1, 65, INT_MIN, INT_MAX};
constexpr int kBadFlags[] = {0, 3, 5, 6, 7, 9, 12, -1, INT_MIN};

TEST(LengthSwitch, RejectsBadLengthBeforeAnythingElse) {
    for (Prec prec : {Prec::F32, Prec::F64}) {
        withType(prec, [&]<class C>() {
            C dst[4] = {};
            const C src[4] = {};
            for (Dir dir : kDirs) {
                for (int len : kBadLengths) {
                    EXPECT_EQ(lengthSwitch<C>(dir)(nullptr, nullptr, len, 0), StatusSize) << len;
                    EXPECT_EQ(lengthSwitch<C>(dir)(src, dst, len, ScaleNoDiv), StatusSize) << len;
                }
            }
        });
    }
}

class StatusContract : public testing::TestWithParam<Case> {};

// Every failure, on the aligned and the unaligned path, with the winner order
// size > null > flag, and the destination bytes as they were.
TEST_P(StatusContract, CodeletFailuresLeaveDestinationUntouched) {
    const Case c = GetParam();
    forEachDirection(c.prec, [&]<class C>(Dir dir) {
        const auto x = randomSignal<C>(c.n, 1);
        for (size_t srcOff : {0, 8, 1}) {
            for (size_t dstOff : {0, 3}) {
                RawBlock in(sizeof(C) * (c.n + 2)), out(sizeof(C) * (c.n + 2), 0x5A);
                const C* src = placeAt(in, srcOff, x);
                C* dst = reinterpret_cast<C*>(out.at(dstOff));
                const std::vector<unsigned char> before(out.at(0), out.at(0) + sizeof(C) * (c.n + 2) + 32);
                auto expectFails = [&](tvkStatus want, tvkStatus got, const char* what) {
                    EXPECT_EQ(got, want) << what << " srcOff=" << srcOff << " dstOff=" << dstOff;
                    EXPECT_EQ(0, std::memcmp(before.data(), out.at(0), before.size())) << what;
                };
                const auto fn = codelet<C>(dir, c.n);
                const auto sw = lengthSwitch<C>(dir);
                expectFails(StatusNullPtr, fn(nullptr, dst, ScaleNoDiv), "null src");
                expectFails(StatusNullPtr, fn(src, nullptr, ScaleNoDiv), "null dst");
                expectFails(StatusNullPtr, fn(nullptr, dst, 3), "null src beats flag");
                expectFails(StatusNullPtr, fn(src, nullptr, 0), "null dst beats flag");
                expectFails(StatusNullPtr, sw(nullptr, dst, c.n, 3), "switch: null src beats flag");
                for (int flag : kBadFlags) {
                    expectFails(StatusScaleFlag, fn(src, dst, flag), "bad flag");
                    expectFails(StatusScaleFlag, sw(src, dst, c.n, flag), "switch: bad flag");
                }
            }
        }
    });
}

TEST_P(StatusContract, SwitchGivesTheBitsOfTheCodelet) {
    const Case c = GetParam();
    forEachDirection(c.prec, [&]<class C>(Dir dir) {
        auto x = randomSignal<C>(c.n, 2);
        x.resize(c.n + 2);  // readable bytes behind the source for the lengths that read them
        for (int flag : kFlags) {
            const auto want = runAligned<C>(dir, c.n, x, flag);
            std::vector<C> got(c.n + 2);
            EXPECT_EQ(lengthSwitch<C>(dir)(x.data(), got.data(), c.n, flag), StatusOk);
            EXPECT_TRUE(sameBits(want.data(), got.data(), c.n)) << "flag " << flag;
        }
    });
}
TVKTEST_ALL_CASES(StatusContract);

class AlignmentAndOverlap : public testing::TestWithParam<Case> {};

// Same bits whatever the byte offsets of source and destination from a
// 16-byte boundary, and for source == destination at any offset.
TEST_P(AlignmentAndOverlap, PlacementNeverChangesABit) {
    const Case c = GetParam();
    forEachDirection(c.prec, [&]<class C>(Dir dir) {
        auto x = randomSignal<C>(c.n, 3);
        x.push_back({});  // readable tail for the over-reading lengths
        x.push_back({});
        const auto want = runAligned<C>(dir, c.n, x, ScaleDivBySqrtN);
        const size_t bytes = sizeof(C) * x.size();
        RawBlock in(bytes), out(bytes);
        for (size_t so = 0; so < 16; ++so) {
            const C* src = placeAt(in, so, x);
            for (size_t d = 0; d < 16; ++d) {
                C* dst = reinterpret_cast<C*>(out.at(d));
                ASSERT_EQ(codelet<C>(dir, c.n)(src, dst, ScaleDivBySqrtN), StatusOk);
                ASSERT_TRUE(sameBits(want.data(), dst, c.n)) << "src offset " << so << ", dst offset " << d;
            }
        }
        for (size_t off : {0, 1, 4, 8, 15}) {
            C* p = placeAt(in, off, x);
            ASSERT_EQ(codelet<C>(dir, c.n)(p, p, ScaleDivBySqrtN), StatusOk);
            EXPECT_TRUE(sameBits(want.data(), p, c.n)) << "in place at offset " << off;
        }
    });
}

// Every destination element is stored (a NaN sentinel that finite input can't
// produce disappears) and canaries before and after the array stay as they were.
TEST_P(AlignmentAndOverlap, WritesEveryElementAndNothingAround) {
    const Case c = GetParam();
    forEachDirection(c.prec, [&]<class C>(Dir dir) {
        auto x = randomSignal<C>(c.n, 5);
        constexpr size_t kGuard = 64;
        for (size_t dstOff : {0, 8, 5}) {
            RawBlock out(sizeof(C) * c.n + 2 * kGuard, 0xFF);  // all-ones bytes: a NaN in both types
            x.resize(c.n + 2);
            RawBlock in(sizeof(C) * x.size());
            C* dst = reinterpret_cast<C*>(out.at(kGuard + dstOff));
            ASSERT_EQ(codelet<C>(dir, c.n)(placeAt(in, 0, x), dst, ScaleNoDiv), StatusOk);
            const auto written = copyOut<C>(dst, c.n);
            for (int k = 0; k < c.n; ++k)
                EXPECT_TRUE(std::isfinite(written[k].re) && std::isfinite(written[k].im)) << "bin " << k << " not written";
            const unsigned char* begin = out.at(0);
            const unsigned char* end = reinterpret_cast<unsigned char*>(dst + c.n);
            for (const unsigned char* p = begin; p < out.at(kGuard + dstOff); ++p)
                ASSERT_EQ(*p, 0xFF) << "written before dst";
            for (const unsigned char* p = end; p < end + kGuard; ++p)
                ASSERT_EQ(*p, 0xFF) << "written after dst at +" << (p - end);
        }
    });
}
TVKTEST_ALL_CASES(AlignmentAndOverlap);

}  // namespace
