// Shared helpers of the real DFT tests: the Codelets by name, the three
// layouts, a long-double reference in both directions, byte-offset buffers
// and the parameter set (element type x length).
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tvkgen.h"

namespace rtest {

enum class Dir { Fwd, Inv };
enum class Layout { CCS, Pack, Perm };

constexpr Dir kDirs[] = {Dir::Fwd, Dir::Inv};
constexpr Layout kLayouts[] = {Layout::CCS, Layout::Pack, Layout::Perm};
constexpr int kFlags[] = {ScaleDivFwdByN, ScaleDivInvByN, ScaleDivBySqrtN, ScaleNoDiv};

template <class T>
using Codelet = tvkStatus (*)(const T*, T*, int32_t);
template <class T>
using Switch = tvkStatus (*)(const T*, T*, int32_t, int32_t);

inline const char* layoutName(Layout l) { return l == Layout::CCS ? "CCS" : l == Layout::Pack ? "Pack" : "Perm"; }

template <class T>
const char* typeName() {
    return std::is_same_v<T, float> ? "32f" : "64f";
}

inline std::string stem(Dir d, Layout l) {
    return d == Dir::Fwd ? std::string("tvkgDFTFwd_RTo") + layoutName(l) : std::string("tvkgDFTInv_") + layoutName(l) + "ToR";
}

// The exported Codelet of a length, or null where the library has none.
template <class T>
Codelet<T> codelet(Dir d, Layout l, int n) {
    const std::string name = stem(d, l) + "_" + std::to_string(n) + "_" + typeName<T>();
    return reinterpret_cast<Codelet<T>>(dlsym(RTLD_DEFAULT, name.c_str()));
}

// The length switches, named directly: they also make the test link the
// library whose Codelets dlsym finds.
template <class T>
Switch<T> lengthSwitch(Dir d, Layout l) {
    if constexpr (std::is_same_v<T, float>) {
        constexpr Switch<float> fwd[] = {tvkgDFTFwd_RToCCS_32f, tvkgDFTFwd_RToPack_32f, tvkgDFTFwd_RToPerm_32f};
        constexpr Switch<float> inv[] = {tvkgDFTInv_CCSToR_32f, tvkgDFTInv_PackToR_32f, tvkgDFTInv_PermToR_32f};
        return (d == Dir::Fwd ? fwd : inv)[int(l)];
    } else {
        constexpr Switch<double> fwd[] = {tvkgDFTFwd_RToCCS_64f, tvkgDFTFwd_RToPack_64f, tvkgDFTFwd_RToPerm_64f};
        constexpr Switch<double> inv[] = {tvkgDFTInv_CCSToR_64f, tvkgDFTInv_PackToR_64f, tvkgDFTInv_PermToR_64f};
        return (d == Dir::Fwd ? fwd : inv)[int(l)];
    }
}

// Elements of a layout array, and where bin k keeps its parts (-1: nowhere).
inline int layoutLength(Layout l, int n) { return l == Layout::CCS ? (n % 2 ? n + 1 : n + 2) : n; }

inline int realElement(Layout l, int n, int k) {
    if (k == 0) return 0;
    if (l == Layout::CCS) return 2 * k;
    if (l == Layout::Perm && n % 2 == 0) return k == n / 2 ? 1 : 2 * k;
    return 2 * k - 1;
}

inline int imagElement(Layout l, int n, int k) {
    if (k == 0 || (n % 2 == 0 && k == n / 2)) return -1;
    return realElement(l, n, k) + 1;
}

// Elements of the input of an inverse that it reads, and of the output of a
// forward that it writes.
inline int inputLength(Dir d, Layout l, int n) { return d == Dir::Fwd ? n : layoutLength(l, n); }
inline int outputLength(Dir d, Layout l, int n) { return d == Dir::Fwd ? layoutLength(l, n) : n; }

// The scale a flag selects, as the bodies hold it.
template <class T>
T scaleOf(Dir d, int flag, int n) {
    if (flag == ScaleDivBySqrtN) {
        if constexpr (std::is_same_v<T, float>)
            return static_cast<float>(1.0L / std::sqrt(static_cast<long double>(n)));
        else
            return 1.0 / std::sqrt(static_cast<double>(n));
    }
    const bool byN = d == Dir::Fwd ? flag == ScaleDivFwdByN : flag == ScaleDivInvByN;
    return byN ? static_cast<T>(1.0L / n) : T(1);
}

using LComplex = std::complex<long double>;
constexpr long double kTwoPi = 6.283185307179586476925286766559L;

inline long double angle(long long jk, int n) { return kTwoPi * static_cast<long double>(jk % n) / n; }

// Bins 0 to n/2 of the DFT of n real values, in long double.
template <class T>
std::vector<LComplex> referenceBins(const std::vector<T>& x) {
    const int n = static_cast<int>(x.size());
    std::vector<LComplex> bins(n / 2 + 1);
    for (int k = 0; k <= n / 2; ++k)
        for (int j = 0; j < n; ++j) bins[k] += static_cast<long double>(x[j]) * std::polar(1.0L, -angle(1LL * j * k, n));
    return bins;
}

// The inverse of bins 0 to n/2: each bin but 0 and n/2 counts twice, and the
// imaginary parts of those two are not looked at.
inline std::vector<long double> referenceSamples(const std::vector<LComplex>& bins, int n) {
    std::vector<long double> x(n);
    for (int j = 0; j < n; ++j)
        for (int k = 0; k <= n / 2; ++k) {
            const long double c = (k == 0 || 2 * k == n) ? 1 : 2;
            const long double a = angle(1LL * j * k, n);
            const long double im = (k == 0 || 2 * k == n) ? 0 : bins[k].imag();
            x[j] += c * (bins[k].real() * std::cos(a) - im * std::sin(a));
        }
    return x;
}

template <class T>
std::vector<LComplex> unpack(Layout l, int n, const T* a) {
    std::vector<LComplex> bins(n / 2 + 1);
    for (int k = 0; k <= n / 2; ++k) {
        const int im = imagElement(l, n, k);
        bins[k] = {static_cast<long double>(a[realElement(l, n, k)]), im < 0 ? 0.0L : static_cast<long double>(a[im])};
    }
    return bins;
}

template <class T>
std::vector<T> randomValues(int count, unsigned seed) {
    std::mt19937 rng(seed * 7919u + static_cast<unsigned>(count));
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<T> x(count);
    for (auto& v : x) v = static_cast<T>(u(rng));
    return x;
}

// A random input of a Codelet: n samples, or a layout array whose unread
// elements (the zeros of CCS) hold random values too.
template <class T>
std::vector<T> randomInput(Dir d, Layout l, int n, unsigned seed) {
    return randomValues<T>(inputLength(d, l, n), seed);
}

// A 16-byte aligned byte block from which arrays at any byte offset are
// carved; the bytes not covered keep `fill` and so act as canaries.
class RawBlock {
   public:
    explicit RawBlock(size_t bytes, unsigned char fill = 0xA5) : storage_(bytes + 64, fill) {}
    unsigned char* at(size_t offset) {
        const auto base = reinterpret_cast<uintptr_t>(storage_.data());
        return reinterpret_cast<unsigned char*>((base + 15) & ~uintptr_t(15)) + offset;
    }
    size_t size() const { return storage_.size() - 16; }

   private:
    std::vector<unsigned char> storage_;
};

// Runs a Codelet on separate 16-byte aligned arrays and returns its output.
template <class T>
std::vector<T> run(Dir d, Layout l, int n, const std::vector<T>& in, int flag) {
    std::vector<T> src(in), dst(outputLength(d, l, n) + 2);
    EXPECT_EQ(codelet<T>(d, l, n)(src.data(), dst.data(), flag), StatusOk);
    dst.resize(outputLength(d, l, n));
    return dst;
}

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), sizeof(T) * a.size()) == 0;
}

// ||got - want||_2 / ||want||_2
template <class V>
long double relativeError(const std::vector<V>& got, const std::vector<V>& want) {
    long double diff = 0, norm = 0;
    for (size_t k = 0; k < want.size(); ++k) {
        diff += std::norm(got[k] - want[k]);
        norm += std::norm(want[k]);
    }
    return std::sqrt(diff / norm);
}

// Parameter of the per-length suites: each test covers both directions and
// the three layouts.
struct Case {
    bool single;
    int n;
};

inline void PrintTo(const Case& c, std::ostream* os) { *os << (c.single ? "tvk32f" : "tvk64f") << " N=" << c.n; }

inline std::string caseName(const testing::TestParamInfo<Case>& info) {
    return std::string(info.param.single ? "32f_" : "64f_") + std::to_string(info.param.n);
}

// Every length whose six Codelets the library exports: all of 2 to 64.
inline std::vector<Case> builtCases() {
    std::vector<Case> cases;
    for (bool single : {true, false})
        for (int n = 2; n <= 64; ++n) {
            bool all = true;
            for (Dir d : kDirs)
                for (Layout l : kLayouts)
                    all &= single ? codelet<float>(d, l, n) != nullptr : codelet<double>(d, l, n) != nullptr;
            if (all) cases.push_back({single, n});
        }
    return cases;
}

// Calls fn.template operator()<T>() with the element type of a case.
template <class F>
void withType(bool single, F&& fn) {
    if (single) fn.template operator()<float>();
    else fn.template operator()<double>();
}

// Runs fn.template operator()<T>(dir, layout) for every direction and layout.
template <class F>
void forEachSet(bool single, F&& fn) {
    withType(single, [&]<class T>() {
        for (Dir d : kDirs)
            for (Layout l : kLayouts) {
                SCOPED_TRACE(stem(d, l) + "_" + typeName<T>());
                fn.template operator()<T>(d, l);
            }
    });
}

#define RTEST_ALL_CASES(Suite) \
    INSTANTIATE_TEST_SUITE_P(AllLengths, Suite, testing::ValuesIn(rtest::builtCases()), rtest::caseName)

}  // namespace rtest
