// Shared pieces of the Walsh-Hadamard tests: a plain reference, the scale
// constants, calls by element type, and test data.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "tvkgen.h"

namespace whttest {

// The transform as defined: stage 0, 1, ... m-1 in place, then the scale.
template <class T>
std::vector<T> reference(std::vector<T> x, T scale) {
    for (size_t d = 1; d < x.size(); d *= 2)
        for (size_t i = 0; i < x.size(); ++i)
            if (!(i & d)) {
                const T a = x[i], b = x[i + d];
                x[i] = a + b;
                x[i + d] = a - b;
            }
    for (T& e : x) e *= scale;
    return x;
}

// Scale of a flag at an order.  Odd orders under ScaleDivBySqrtN carry fixed
// patterns, one exponent step per two orders; the tvk64f ones end in ...3BCC.
template <class T>
T scaleOf(int order, int32_t flag) {
    switch (flag) {
        case ScaleDivFwdByN:
        case ScaleDivInvByN: return std::ldexp(T(1), -order);
        case ScaleDivBySqrtN:
            if (order % 2 == 0) return std::ldexp(T(1), -order / 2);
            if constexpr (sizeof(T) == 4)
                return std::bit_cast<float>(uint32_t{0x3F3504F3} - (uint32_t(order - 1) / 2 << 23));
            else
                return std::bit_cast<double>(uint64_t{0x3FE6A09E667F3BCC} - (uint64_t(order - 1) / 2 << 52));
        default: return T(1);
    }
}

inline tvkStatus transform(const float* src, float* dst, int order, int32_t flag, uint8_t* buffer) {
    return tvkgWHT_32f(src, dst, order, flag, buffer);
}
inline tvkStatus transform(const double* src, double* dst, int order, int32_t flag, uint8_t* buffer) {
    return tvkgWHT_64f(src, dst, order, flag, buffer);
}
inline tvkStatus bufferSize(float*, int order, int32_t* size) { return tvkgWHTGetBufferSize_32f(order, size); }
inline tvkStatus bufferSize(double*, int order, int32_t* size) { return tvkgWHTGetBufferSize_64f(order, size); }

template <class T>
int32_t bufferBytes(int order) {
    int32_t size = -1;
    bufferSize(static_cast<T*>(nullptr), order, &size);
    return size;
}

// Values with full mantissas, so that any change in the order of the stages
// shows in the rounding.
template <class T>
std::vector<T> randomData(int order, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<T> dist(-1, 1);
    std::vector<T> x(size_t{1} << order);
    for (T& e : x) e = dist(gen);
    return x;
}

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

enum class Type { F32, F64 };
inline const char* nameOf(Type t) { return t == Type::F32 ? "32f" : "64f"; }
inline void PrintTo(Type t, std::ostream* os) { *os << nameOf(t); }

// Tests run once per element type and order.
class ByTypeAndOrder : public ::testing::TestWithParam<std::tuple<Type, int>> {
protected:
    bool single() const { return std::get<0>(GetParam()) == Type::F32; }
    int order() const { return std::get<1>(GetParam()); }
};

inline auto everyTypeAndOrder() {
    return ::testing::Combine(::testing::Values(Type::F32, Type::F64), ::testing::Range(1, 14));
}

inline std::string caseName(const ::testing::TestParamInfo<ByTypeAndOrder::ParamType>& info) {
    return std::string(nameOf(std::get<0>(info.param))) + "_order" + std::to_string(std::get<1>(info.param));
}

}  // namespace whttest
