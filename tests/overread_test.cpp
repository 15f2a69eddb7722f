// Reads past the end of the source: each length may read exactly its
// allowance and no further (checked against a PROT_NONE page), and what lies
// in those bytes matters only where it must: a NaN or infinity behind the
// source of tvk32fc lengths 47 and 59 turns every output into NaN.
#include <cstdio>
#include <limits>

#include "dft_support.h"
#include "memory_probes.h"

using namespace tvktest;

namespace {

// Bytes a body may read behind the source array.
template <class C>
size_t overReadAllowance(int n, bool alignedPath) {
    if constexpr (std::is_same_v<C, tvk64fc>) return 0;
    switch (n) {
        case 9:
        case 25:
        case 27:
        case 45:
        case 47:
        case 49:
        case 59:
            return 8;
        case 18:
        case 50:
        case 54:
        case 60:
            return alignedPath ? 16 : 8;
        default:
            return 0;
    }
}

class OverRead : public testing::TestWithParam<Case> {};

TEST_P(OverRead, ReadsNoFurtherThanItsAllowance) {
    const Case c = GetParam();
    forEachDirection(c.prec, [&]<class C>(Dir dir) {
        GuardedPage page;
        ASSERT_TRUE(page.ok());
        const auto x = randomSignal<C>(c.n, 70);
        std::vector<C> padded(x);
        padded.resize(c.n + 2);
        const auto want = runAligned<C>(dir, c.n, padded, ScaleNoDiv);
        for (bool alignedPath : {true, false}) {
            const size_t allowance = overReadAllowance<C>(c.n, alignedPath);
            unsigned char* srcBytes = page.guard() - allowance - sizeof(C) * c.n;
            // The aligned path needs both pointers on 16 bytes; where the
            // source can't be, the exact-allowance placement is unaligned anyway.
            if (alignedPath && reinterpret_cast<uintptr_t>(srcBytes) % 16 != 0) continue;
            std::memset(srcBytes, 0, sizeof(C) * c.n + allowance);
            std::memcpy(srcBytes, x.data(), sizeof(C) * c.n);
            RawBlock out(sizeof(C) * c.n);
            C* dst = reinterpret_cast<C*>(out.at(alignedPath ? 0 : 4));
            ASSERT_EQ(codelet<C>(dir, c.n)(reinterpret_cast<const C*>(srcBytes), dst, ScaleNoDiv), StatusOk);
            EXPECT_TRUE(sameBits(want.data(), dst, c.n)) << (alignedPath ? "aligned" : "unaligned") << " path";
        }
    });
}

// Finite values behind the source never change a bit; NaN and infinity
// change nothing either, except in tvk32fc 47 and 59 where they reach every
// output through a product with zero.
TEST_P(OverRead, BytesBehindSourceOnlyMatterAsTheyMust) {
    const Case c = GetParam();
    forEachDirection(c.prec, [&]<class C>(Dir dir) {
        using R = RealOf<C>;
        using L = std::numeric_limits<R>;
        // Form B multiplies the element behind the source by zero.
        const bool nanSpreads = std::is_same_v<C, tvk32fc> && (c.n == 47 || c.n == 59);
        const auto x = randomSignal<C>(c.n, 80);
        const C finite[] = {{R(1e30), R(-1e30)}, {L::max(), L::denorm_min()}, {R(-0.0), R(3.5)}};
        const C nonFinite[] = {{L::infinity(), 0}, {0, L::quiet_NaN()}, {-L::infinity(), -L::infinity()}};
        RawBlock in(sizeof(C) * (c.n + 2) + 16), out(sizeof(C) * c.n + 16);
        for (size_t srcOff : {0, 8, 1}) {
            auto run = [&](C behind) {
                std::vector<C> data(x);
                data.push_back(behind);
                data.push_back(behind);
                C* dst = reinterpret_cast<C*>(out.at(srcOff == 0 ? 0 : 8));
                EXPECT_EQ(codelet<C>(dir, c.n)(placeAt(in, srcOff, data), dst, ScaleNoDiv), StatusOk);
                return std::vector<C>(dst, dst + c.n);
            };
            const auto ordinary = run(C{});
            for (C v : finite)
                EXPECT_TRUE(sameBits(ordinary.data(), run(v).data(), c.n)) << "finite " << v.re << "," << v.im;
            for (C v : nonFinite) {
                const auto got = run(v);
                if (!nanSpreads) {
                    EXPECT_TRUE(sameBits(ordinary.data(), got.data(), c.n)) << "non-finite " << v.re << "," << v.im;
                    continue;
                }
                for (int k = 0; k < c.n; ++k)
                    ASSERT_TRUE(std::isnan(got[k].re) && std::isnan(got[k].im))
                        << "bin " << k << " with " << v.re << "," << v.im << " behind, src offset " << srcOff;
            }
        }
    });
}
TVKTEST_ALL_CASES(OverRead);

}  // namespace
