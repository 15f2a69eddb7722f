// How far past the end of the source each Codelet of the complex DFT, the
// real DFT, Hartley and Walsh-Hadamard reads today, measured and printed.  With
// hardware watchpoints on the 32 bytes behind the source, where the system
// allows them, the measure is exact to 8 bytes on both paths.  Otherwise it
// is taken against a guard page: exact on the unaligned path (the source can
// end at any byte before the guard), and to within its 16-byte block on the
// aligned path (the source must start on a 16-byte boundary, so a page
// boundary never falls inside that block).  The contract reserves 8 bytes
// behind the source of tvk32fc lengths 9, 25, 27, 45, 47, 49 and 59, and 16
// bytes (8 on the unaligned path) behind 18, 50, 54 and 60; no other Codelet
// may read past its source.
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "dft_support.h"
#include "memory_probes.h"

using namespace tvktest;

namespace {

constexpr size_t kMaxProbe = 48;  // bytes past the end tried

// The bytes behind the source that a Codelet may read: the contract's allowance.
size_t allowance(bool single, bool complex, int n, bool alignedPath) {
    if (!single || !complex) return 0;
    switch (n) {
        case 9: case 25: case 27: case 45: case 47: case 49: case 59: return 8;
        case 18: case 50: case 54: case 60: return alignedPath ? 16 : 8;
        default: return 0;
    }
}

// The reads past the end of a source of `bytes` bytes that call(src, dst)
// makes on one path: more than `above` and at most `atMost` bytes.
struct Reach {
    long above = -1;
    size_t atMost = 0;
    bool found = false;
    bool exact = false;  // atMost is the reach itself, not only a bound
};

unsigned char* aligned16(std::vector<unsigned char>& storage) {
    return storage.data() + (-reinterpret_cast<uintptr_t>(storage.data()) & 15);
}

// Bytes past the end that call(src, dst) touches, to 8 bytes, by watchpoints
// on the four 8-byte slots behind the source; none where they can't be set.
// A source that starts off a 16-byte boundary selects the unaligned path.
template <class Call>
std::optional<Reach> watched(size_t bytes, size_t dstBytes, bool alignedPath, Call call) {
    std::vector<unsigned char> srcStorage(bytes + 8 * ReadWatch::kSlots + 32), dstStorage(dstBytes + 32);
    // The slots start at the end of the source, on a multiple of 8: a source
    // of 8k + 4 bytes starts 4 bytes past a boundary, on the unaligned path.
    if (alignedPath && bytes % 8 != 0) return std::nullopt;
    unsigned char* src = aligned16(srcStorage) + (alignedPath ? 0 : bytes % 8 ? 4 : 8);
    unsigned char* dst = aligned16(dstStorage);
    ReadWatch watch(src + bytes);
    if (!watch.ok()) return std::nullopt;
    const auto hits = watch.count([&] { call(src, dst); });
    Reach reach;
    reach.found = reach.exact = true;
    for (int slot = 0; slot < ReadWatch::kSlots; ++slot)
        if (hits[slot] != 0) {
            reach.above = 8 * slot;
            reach.atMost = 8 * (slot + 1);
        }
    if (reach.atMost == 0) reach.above = -1;
    return reach;
}

// The same against a guard page.
template <class Call>
Reach guarded(size_t bytes, size_t dstBytes, bool alignedPath, Call call) {
    GuardedPage page(bytes + kMaxProbe);
    EXPECT_TRUE(page.ok());
    std::vector<unsigned char> dstStorage(dstBytes + 32);
    unsigned char* dst = dstStorage.data() + (-reinterpret_cast<uintptr_t>(dstStorage.data()) & 15) +
                         (alignedPath ? 0 : 4);  // a misaligned destination selects the unaligned path
    Reach reach;
    for (size_t past = 0; past <= kMaxProbe && page.ok(); ++past) {
        unsigned char* src = page.guard() - past - bytes;
        if (alignedPath && reinterpret_cast<uintptr_t>(src) % 16 != 0) continue;
        std::fill(src, page.guard(), 0);
        if (runsWithoutFault([&] { call(src, dst); })) {
            reach.atMost = past;
            reach.found = true;
            return reach;
        }
        reach.above = static_cast<long>(past);
    }
    return reach;
}

std::string describe(const Reach& r) {
    if (!r.found) return "more than " + std::to_string(kMaxProbe);
    if (r.atMost == 0) return "0";
    if (r.above + 1 == static_cast<long>(r.atMost) || r.above + 8 == static_cast<long>(r.atMost))
        return std::to_string(r.atMost);
    return std::to_string(r.above + 1) + " to " + std::to_string(r.atMost);
}

// Measures one Codelet, checks the contract and adds a line to `report` if
// it reads past its source at all.  A two-path Codelet is measured on each
// path; a single-path one (the scalar real DFT and Hartley bodies) once,
// since alignment selects nothing there.
template <class Call>
void measureCodelet(const std::string& name, bool single, bool complex, int n, size_t bytes, size_t dstBytes,
                    Call call, std::string& report, bool twoPaths = true) {
    const auto watchedUnaligned = watched(bytes, dstBytes, false, call);
    const Reach unaligned = watchedUnaligned ? *watchedUnaligned : guarded(bytes, dstBytes, false, call);
    ASSERT_TRUE(unaligned.found) << name << " reads more than " << kMaxProbe << " bytes past";
    EXPECT_LE(unaligned.atMost, allowance(single, complex, n, false)) << name << ", unaligned path";
    if (!twoPaths) {
        if (unaligned.atMost) report += "  " + name + ": " + describe(unaligned) + " bytes\n";
        return;
    }
    const auto watchedAligned = watched(bytes, dstBytes, true, call);
    const Reach aligned = watchedAligned ? *watchedAligned : guarded(bytes, dstBytes, true, call);
    ASSERT_TRUE(aligned.found) << name << " reads more than " << kMaxProbe << " bytes past";
    // Against a guard page the aligned source can only end at 16-byte steps
    // from the guard, so what is checked there is that the allowance suffices.
    if (aligned.exact)
        EXPECT_LE(aligned.atMost, allowance(single, complex, n, true)) << name << ", aligned path";
    else
        EXPECT_LT(aligned.above, static_cast<long>(allowance(single, complex, n, true))) << name << ", aligned path";
    if (unaligned.atMost || aligned.atMost)
        report += "  " + name + ": unaligned path " + describe(unaligned) + ", aligned path " + describe(aligned) +
                  " bytes\n";
}

void printReport(const char* what, const std::string& report) {
    const bool exact = ReadWatch::available();
    std::printf("%s, bytes read past the end of the source (%s):\n%s", what,
                exact ? "by watchpoints, to 8 bytes" : "against a guard page", report.empty() ? "  none\n" : report.c_str());
}

// The probes themselves: a call that reads byte 17 behind its source is seen
// to read 18 bytes (guard page, unaligned) or 24 (watchpoints, 8-byte slots).
TEST(ReadsPastSource, ProbesSeeADeliberateRead) {
    const auto readsByte17 = [](const unsigned char* s, unsigned char* d) {
        *d = *static_cast<const volatile unsigned char*>(s + 64 + 17);
    };
    const Reach byPage = guarded(64, 16, false, readsByte17);
    EXPECT_TRUE(byPage.found);
    EXPECT_EQ(byPage.atMost, 18u);
    EXPECT_EQ(byPage.above, 17);
    if (const auto byWatch = watched(64, 16, false, readsByte17)) {
        EXPECT_EQ(byWatch->atMost, 24u);
        EXPECT_EQ(byWatch->above, 16);
    }
}

TEST(ReadsPastSource, ComplexDftAsMeasured) {
    for (Prec prec : {Prec::F32, Prec::F64}) {
        withType(prec, [&]<class C>() {
            for (Dir dir : kDirs) {
                std::string report;
                for (int n = kMinLen; n <= kMaxLen; ++n) {
                    const auto fn = codelet<C>(dir, n);
                    const std::string name = std::string(dir == Dir::Fwd ? "tvkgDFTFwd" : "tvkgDFTInv") + "_CToC_" +
                                             std::to_string(n) + (prec == Prec::F32 ? "_32fc" : "_64fc");
                    measureCodelet(name, prec == Prec::F32, true, n, sizeof(C) * n, sizeof(C) * n,
                                   [&](const unsigned char* s, unsigned char* d) {
                                       fn(reinterpret_cast<const C*>(s), reinterpret_cast<C*>(d), ScaleNoDiv);
                                   },
                                   report);
                }
                printReport((std::string(prec == Prec::F32 ? "tvk32fc " : "tvk64fc ") + dirName(dir)).c_str(), report);
            }
        });
    }
}

// The real DFT through its switches (a length not built yet fails with
// StatusSize and reads nothing).  A forward reads N reals; an inverse reads
// N, except from CCS, whose last element read is element N.
template <class T>
void realDftNever(std::string& report) {
    using Switch = tvkStatus (*)(const T*, T*, int32_t, int32_t);
    constexpr bool single = std::is_same_v<T, float>;
    struct Form {
        const char* name;
        Switch fn;
        bool ccsInverse;
    };
    const Form forms[] = {
        {"RToCCS", single ? (Switch)tvkgDFTFwd_RToCCS_32f : (Switch)tvkgDFTFwd_RToCCS_64f, false},
        {"RToPack", single ? (Switch)tvkgDFTFwd_RToPack_32f : (Switch)tvkgDFTFwd_RToPack_64f, false},
        {"RToPerm", single ? (Switch)tvkgDFTFwd_RToPerm_32f : (Switch)tvkgDFTFwd_RToPerm_64f, false},
        {"CCSToR", single ? (Switch)tvkgDFTInv_CCSToR_32f : (Switch)tvkgDFTInv_CCSToR_64f, true},
        {"PackToR", single ? (Switch)tvkgDFTInv_PackToR_32f : (Switch)tvkgDFTInv_PackToR_64f, false},
        {"PermToR", single ? (Switch)tvkgDFTInv_PermToR_32f : (Switch)tvkgDFTInv_PermToR_64f, false},
    };
    for (const Form& form : forms)
        for (int n = kMinLen; n <= kMaxLen; ++n) {
            const size_t reals = form.ccsInverse ? n + 1 : n;
            measureCodelet(std::string("tvkgDFT") + form.name + "_" + std::to_string(n) + (single ? "_32f" : "_64f"),
                           single, false, n, sizeof(T) * reals, sizeof(T) * (n + 2),
                           [&](const unsigned char* s, unsigned char* d) {
                               form.fn(reinterpret_cast<const T*>(s), reinterpret_cast<T*>(d), n, ScaleNoDiv);
                           },
                           report, /*twoPaths=*/false);
        }
}

TEST(ReadsPastSource, RealDftNever) {
    std::string report;
    realDftNever<float>(report);
    realDftNever<double>(report);
    printReport("real DFT", report);
}

// Hartley through its switches: N reals in, N out.
TEST(ReadsPastSource, HartleyNever) {
    std::string report;
    for (int n = kMinLen; n <= kMaxLen; ++n) {
        measureCodelet("tvkgHartley_" + std::to_string(n) + "_32f", true, false, n, 4 * n, 4 * n,
                       [&](const unsigned char* s, unsigned char* d) {
                           tvkgHartley_32f(reinterpret_cast<const float*>(s), reinterpret_cast<float*>(d), n,
                                           ScaleNoDiv);
                       },
                       report, /*twoPaths=*/false);
        measureCodelet("tvkgHartley_" + std::to_string(n) + "_64f", false, false, n, 8 * n, 8 * n,
                       [&](const unsigned char* s, unsigned char* d) {
                           tvkgHartley_64f(reinterpret_cast<const double*>(s), reinterpret_cast<double*>(d), n,
                                           ScaleNoDiv);
                       },
                       report, /*twoPaths=*/false);
    }
    printReport("Hartley", report);
}

// Through the order switches, which hand on to the Codelets unchanged.
TEST(ReadsPastSource, WalshHadamardNever) {
    std::string report;
    for (int order = 1; order <= 13; ++order) {
        const size_t n = size_t{1} << order;
        // A null buffer: the call allocates its own, so that a probe that
        // faults loses at most one block, not a buffer it was reading.
        measureCodelet("tvkgWHT_" + std::to_string(order) + "_32f", true, false, static_cast<int>(n), 4 * n, 4 * n,
                       [&](const unsigned char* s, unsigned char* d) {
                           tvkgWHT_32f(reinterpret_cast<const float*>(s), reinterpret_cast<float*>(d), order,
                                       ScaleNoDiv, nullptr);
                       },
                       report);
        measureCodelet("tvkgWHT_" + std::to_string(order) + "_64f", false, false, static_cast<int>(n), 8 * n, 8 * n,
                       [&](const unsigned char* s, unsigned char* d) {
                           tvkgWHT_64f(reinterpret_cast<const double*>(s), reinterpret_cast<double*>(d), order,
                                       ScaleNoDiv, nullptr);
                       },
                       report);
    }
    printReport("Walsh-Hadamard", report);
}

}  // namespace
