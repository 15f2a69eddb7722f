// Shared helpers of the complex DFT tests: the Codelet tables, the scale
// constants, a long-double reference DFT, byte-offset buffers and the
// parameter set (element type x direction x length).
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tvkgen.h"

namespace tvktest {

enum class Prec { F32, F64 };
enum class Dir { Fwd, Inv };

constexpr int kMinLen = 2;
constexpr int kMaxLen = 64;
constexpr int kFlags[] = {ScaleDivFwdByN, ScaleDivInvByN, ScaleDivBySqrtN, ScaleNoDiv};

// Complex element type and its real part, selected by Prec.
template <Prec P>
struct Elem;
template <>
struct Elem<Prec::F32> {
    using C = tvk32fc;
    using R = float;
};
template <>
struct Elem<Prec::F64> {
    using C = tvk64fc;
    using R = double;
};

template <class C>
using Codelet = tvkStatus (*)(const C*, C*, int32_t);
template <class C>
using Switch = tvkStatus (*)(const C*, C*, int32_t, int32_t);

// Tables of the Codelets of each direction and type, indexed by N - 2.
#define TVKTEST_FWD32(N) tvkgDFTFwd_CToC_##N##_32fc,
#define TVKTEST_INV32(N) tvkgDFTInv_CToC_##N##_32fc,
#define TVKTEST_FWD64(N) tvkgDFTFwd_CToC_##N##_64fc,
#define TVKTEST_INV64(N) tvkgDFTInv_CToC_##N##_64fc,
inline constexpr Codelet<tvk32fc> kFwd32[] = {TVKGEN_DFT_LENGTHS(TVKTEST_FWD32)};
inline constexpr Codelet<tvk32fc> kInv32[] = {TVKGEN_DFT_LENGTHS(TVKTEST_INV32)};
inline constexpr Codelet<tvk64fc> kFwd64[] = {TVKGEN_DFT_LENGTHS(TVKTEST_FWD64)};
inline constexpr Codelet<tvk64fc> kInv64[] = {TVKGEN_DFT_LENGTHS(TVKTEST_INV64)};

template <class C>
Codelet<C> codelet(Dir d, int n) {
    if constexpr (std::is_same_v<C, tvk32fc>)
        return (d == Dir::Fwd ? kFwd32 : kInv32)[n - kMinLen];
    else
        return (d == Dir::Fwd ? kFwd64 : kInv64)[n - kMinLen];
}

template <class C>
Switch<C> lengthSwitch(Dir d) {
    if constexpr (std::is_same_v<C, tvk32fc>)
        return d == Dir::Fwd ? tvkgDFTFwd_CToC_32fc : tvkgDFTInv_CToC_32fc;
    else
        return d == Dir::Fwd ? tvkgDFTFwd_CToC_64fc : tvkgDFTInv_CToC_64fc;
}

// Calls fn.template operator()<C>() with the element type of p.
template <class F>
decltype(auto) withType(Prec p, F&& fn) {
    if (p == Prec::F32) return fn.template operator()<tvk32fc>();
    return fn.template operator()<tvk64fc>();
}

template <class C>
using RealOf = decltype(C{}.re);

// The scale a flag selects, as the literal the bodies hold: nearest binary32
// in tvk32fc; in tvk64fc nearest 1/N and 1.0/sqrt(N) (two roundings).
template <class C>
RealOf<C> scaleOf(Dir d, int flag, int n) {
    using R = RealOf<C>;
    const bool byN = (d == Dir::Fwd) ? flag == ScaleDivFwdByN : flag == ScaleDivInvByN;
    if (flag == ScaleDivBySqrtN) {
        if constexpr (std::is_same_v<R, float>)
            return static_cast<float>(1.0L / std::sqrt(static_cast<long double>(n)));
        else
            return 1.0 / std::sqrt(static_cast<double>(n));
    }
    if (byN) return static_cast<R>(1.0L / n);
    return R(1);
}

using LComplex = std::complex<long double>;

// Long-double DFT, the reference every tolerance is measured against.
template <class C>
std::vector<LComplex> referenceDft(const std::vector<C>& x, Dir d) {
    const int n = static_cast<int>(x.size());
    const long double sign = d == Dir::Fwd ? -1.0L : 1.0L;
    const long double twoPi = 6.283185307179586476925286766559L;
    std::vector<LComplex> out(n);
    for (int k = 0; k < n; ++k) {
        LComplex acc = 0;
        for (int j = 0; j < n; ++j) {
            const long double angle = sign * twoPi * static_cast<long double>((j * k) % n) / n;
            acc += LComplex(x[j].re, x[j].im) * LComplex(std::cos(angle), std::sin(angle));
        }
        out[k] = acc;
    }
    return out;
}

template <class C>
std::vector<C> randomSignal(int n, unsigned seed) {
    std::mt19937 rng(seed * 131u + static_cast<unsigned>(n));
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<C> x(n);
    for (auto& e : x) e = {static_cast<RealOf<C>>(u(rng)), static_cast<RealOf<C>>(u(rng))};
    return x;
}

// The n elements at p, which may be misaligned for C, by value.
template <class C>
std::vector<C> copyOut(const void* p, int n) {
    std::vector<C> out(n);
    std::memcpy(out.data(), p, sizeof(C) * n);
    return out;
}

template <class C>
bool sameBits(const C* a, const C* b, int n) {
    return std::memcmp(a, b, sizeof(C) * n) == 0;
}

// ||a - b||_2 / ||b||_2 over all components.
template <class C>
long double relativeError(const std::vector<C>& got, const std::vector<LComplex>& want) {
    long double diff = 0, norm = 0;
    for (size_t k = 0; k < want.size(); ++k) {
        diff += std::norm(LComplex(got[k].re, got[k].im) - want[k]);
        norm += std::norm(want[k]);
    }
    return std::sqrt(diff / norm);
}

template <class C>
std::vector<C> swapParts(std::vector<C> x) {
    for (auto& e : x) std::swap(e.re, e.im);
    return x;
}

// A 16-byte aligned byte block from which arrays at any byte offset are carved;
// the bytes not covered are filled with `fill` and so act as canaries.
class RawBlock {
   public:
    explicit RawBlock(size_t bytes, unsigned char fill = 0xA5) : storage_(bytes + 64, fill) {}
    unsigned char* at(size_t offset) {
        auto base = reinterpret_cast<uintptr_t>(storage_.data());
        return reinterpret_cast<unsigned char*>((base + 15) & ~uintptr_t(15)) + offset;
    }

   private:
    std::vector<unsigned char> storage_;
};

template <class C>
C* placeAt(RawBlock& block, size_t offset, const std::vector<C>& data) {
    unsigned char* p = block.at(offset);
    std::memcpy(p, data.data(), sizeof(C) * data.size());
    return reinterpret_cast<C*>(p);
}

// Runs a Codelet on a copy of x in 16-byte aligned separate arrays.
template <class C>
std::vector<C> runAligned(Dir d, int n, const std::vector<C>& x, int flag, tvkStatus* st = nullptr) {
    RawBlock in(sizeof(C) * (n + 2), 0), out(sizeof(C) * (n + 2), 0);
    const C* src = placeAt(in, 0, x);
    C* dst = reinterpret_cast<C*>(out.at(0));
    const tvkStatus s = codelet<C>(d, n)(src, dst, flag);
    if (st)
        *st = s;
    else
        EXPECT_EQ(s, StatusOk);
    return std::vector<C>(dst, dst + n);
}

constexpr Dir kDirs[] = {Dir::Fwd, Dir::Inv};

inline const char* dirName(Dir d) { return d == Dir::Fwd ? "forward" : "inverse"; }

// Runs fn.template operator()<C>(dir) in both directions for the type of p.
template <class F>
void forEachDirection(Prec p, F&& fn) {
    withType(p, [&]<class C>() {
        for (Dir dir : kDirs) {
            SCOPED_TRACE(dirName(dir));
            fn.template operator()<C>(dir);
        }
    });
}

// Parameter of the per-length suites; each test covers both directions.
struct Case {
    Prec prec;
    int n;
};

inline void PrintTo(const Case& c, std::ostream* os) {
    *os << (c.prec == Prec::F32 ? "tvk32fc" : "tvk64fc") << " N=" << c.n;
}

inline std::string caseName(const testing::TestParamInfo<Case>& info) {
    return std::string(info.param.prec == Prec::F32 ? "32fc_" : "64fc_") + std::to_string(info.param.n);
}

inline std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (Prec p : {Prec::F32, Prec::F64})
        for (int n = kMinLen; n <= kMaxLen; ++n) cases.push_back({p, n});
    return cases;
}

#define TVKTEST_ALL_CASES(Suite) \
    INSTANTIATE_TEST_SUITE_P(AllLengths, Suite, testing::ValuesIn(tvktest::allCases()), tvktest::caseName)

}  // namespace tvktest
