// The accuracy command's view of a family: a list of Codelets, each with a
// way to call it and a long-double reference of what it computes.
//
// Adding a family takes one file, family_<name>.cpp, that defines
//     std::vector<tvkaccuracy::Codelet> <name>();
// and one line in registry.cpp.  The file builds its list with makeCodelet:
//     all.push_back(makeCodelet("tvkgHartley_16_32f", "32f", 16, tvkgHartley_16_32f, 16, 16, hartleyOf16));
// The command draws the inputs, calls, compares and writes the table.
#pragma once

#include <complex>
#include <cstring>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "tvkgen.h"

namespace tvkaccuracy {

using Real = long double;
using Complex = std::complex<long double>;

// Reals in, reals out: a complex array is its interleaved parts.
using Runner = std::function<tvkStatus(const Real* in, Real* out)>;
using Reference = std::function<void(const Real* in, Real* out)>;

struct Codelet {
    std::string name;     // exported name, for messages
    std::string variant;  // column of the family's table, e.g. "32fc fwd"
    int n = 0;            // transform length N: the row of the table
    bool single = false;  // tvk32f / tvk32fc (else tvk64f / tvk64fc): the epsilon and the input rounding
    int inputs = 0;       // reals the Codelet reads from its source
    int outputs = 0;      // reals it writes to its destination
    // Calls the Codelet with ScaleNoDiv on `inputs` reals, each exactly a
    // value of the Codelet's type, and stores its `outputs` reals.
    Runner run;
    // What the Codelet computes under ScaleNoDiv, in long double.
    Reference reference;
};

// ---- building a Codelet entry ------------------------------------------------

template <class Elem>
struct RealOf {
    using type = Elem;  // tvk32f, tvk64f
};
template <>
struct RealOf<tvk32fc> {
    using type = tvk32f;
};
template <>
struct RealOf<tvk64fc> {
    using type = tvk64f;
};

// Bytes of zeros behind every source: more than any Codelet may read past
// its end, so that the call stays inside its buffer.
inline constexpr size_t kSourcePadding = 32;

// A Runner for any call(const R* src, R* dst) -> tvkStatus with R = float or
// double: the data are copied into 16-byte aligned arrays of R and back.
template <class R, class Call>
Runner runnerOf(int inputs, int outputs, Call call) {
    return [=](const Real* in, Real* out) {
        std::vector<R> src(inputs + kSourcePadding / sizeof(R) + 4, R(0)), dst(outputs + 4);
        R* s = src.data() + (-reinterpret_cast<uintptr_t>(src.data()) & 15) / sizeof(R);
        R* d = dst.data() + (-reinterpret_cast<uintptr_t>(dst.data()) & 15) / sizeof(R);
        for (int i = 0; i < inputs; ++i) s[i] = static_cast<R>(in[i]);
        const tvkStatus status = call(s, d);
        for (int i = 0; i < outputs; ++i) out[i] = d[i];
        return status;
    };
}

// The entry of a Codelet of the common signature f(src, dst, flag).
template <class Elem>
Codelet makeCodelet(std::string name, std::string variant, int n, tvkStatus (*fn)(const Elem*, Elem*, int32_t),
                    int inputs, int outputs, Reference reference) {
    using R = typename RealOf<Elem>::type;
    Runner run = runnerOf<R>(inputs, outputs, [fn](const R* s, R* d) {
        return fn(reinterpret_cast<const Elem*>(s), reinterpret_cast<Elem*>(d), ScaleNoDiv);
    });
    return {std::move(name), std::move(variant), n, std::is_same_v<R, tvk32f>, inputs, outputs, std::move(run),
            std::move(reference)};
}

// ---- reference helpers -------------------------------------------------------------

// exp(sign * 2 pi i m / n) for m = 0 .. n-1.
std::vector<Complex> unitRoots(int n, int sign);

// X[k] = sum_j x[j] * exp(sign * 2 pi i j k / n), directly, in long double.
std::vector<Complex> dft(const Complex* x, int n, int sign);

}  // namespace tvkaccuracy
