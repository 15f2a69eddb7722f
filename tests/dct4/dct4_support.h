// Shared pieces of the DCT-IV tests: calls by element type, a context that
// frees itself, the two references (a long-double sum and FFTW's REDFT11),
// test data and the parameter sets.
#pragma once

#include <gtest/gtest.h>

#include <fftw3.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tvkgen.h"

namespace dct4test {

// ---- the family by element type ----------------------------------------------

inline tvkStatus getSize(float*, int32_t n, int32_t* size) { return tvkgDCT4GetSize_32f(n, size); }
inline tvkStatus getSize(double*, int32_t n, int32_t* size) { return tvkgDCT4GetSize_64f(n, size); }
inline tvkStatus init(float*, DCT4Spec** context, int32_t n, uint8_t* block) {
    return tvkgDCT4Init_32f(context, n, block);
}
inline tvkStatus init(double*, DCT4Spec** context, int32_t n, uint8_t* block) {
    return tvkgDCT4Init_64f(context, n, block);
}
inline tvkStatus initAlloc(float*, DCT4Spec** context, int32_t n) { return tvkgDCT4InitAlloc_32f(context, n); }
inline tvkStatus initAlloc(double*, DCT4Spec** context, int32_t n) { return tvkgDCT4InitAlloc_64f(context, n); }
inline tvkStatus release(float*, DCT4Spec* context) { return tvkgDCT4Free_32f(context); }
inline tvkStatus release(double*, DCT4Spec* context) { return tvkgDCT4Free_64f(context); }
inline tvkStatus transform(const float* x, float* y, const DCT4Spec* context) { return tvkgDCT4_32f(x, y, context); }
inline tvkStatus transform(const double* x, double* y, const DCT4Spec* context) { return tvkgDCT4_64f(x, y, context); }

template <class T>
tvkStatus getSize(int32_t n, int32_t* size) {
    return getSize(static_cast<T*>(nullptr), n, size);
}

// The block size of n, or -1 where the query refuses it.
template <class T>
int64_t blockBytes(int32_t n) {
    int32_t size = 0;
    return getSize<T>(n, &size) == StatusOk ? size : -1;
}

// A context in a block of exactly the queried size, `offset` bytes past a
// 64-byte boundary.  Not freed through the library: the block is the test's.
template <class T>
class Context {
public:
    explicit Context(int32_t n, size_t offset = 0) {
        const int64_t bytes = blockBytes<T>(n);
        if (bytes < 0) return;
        storage_.reset(new uint8_t[bytes + offset + 64]);
        block_ = storage_.get() + (-reinterpret_cast<uintptr_t>(storage_.get()) & 63) + offset;
        end_ = block_ + bytes;
        status_ = init(static_cast<T*>(nullptr), &spec_, n, block_);
    }
    tvkStatus status() const { return status_; }
    const DCT4Spec* context() const { return spec_; }
    DCT4Spec* context() { return spec_; }
    uint8_t* block() const { return block_; }
    uint8_t* end() const { return end_; }

private:
    std::unique_ptr<uint8_t[]> storage_;
    uint8_t* block_ = nullptr;
    uint8_t* end_ = nullptr;
    DCT4Spec* spec_ = nullptr;
    tvkStatus status_ = StatusSize;
};

template <class T>
std::vector<T> run(const Context<T>& c, const std::vector<T>& x) {
    std::vector<T> y(x.size());
    EXPECT_EQ(transform(x.data(), y.data(), c.context()), StatusOk);
    return y;
}

// ---- references ------------------------------------------------------------------

// y[k] = sum_j x[j] cos(pi (2j+1)(2k+1) / 4n) in long double, from a table of
// the 8n angles the products reach.
template <class T>
std::vector<long double> longDoubleReference(const std::vector<T>& x) {
    const size_t n = x.size(), period = 8 * n;
    constexpr long double pi = 3.141592653589793238462643383279502884L;
    std::vector<long double> c(period);
    for (size_t i = 0; i < period; ++i) c[i] = std::cos(pi * static_cast<long double>(i) / (4.0L * n));
    std::vector<long double> y(n);
    for (size_t k = 0; k < n; ++k) {
        long double sum = 0;
        for (size_t j = 0; j < n; ++j) sum += x[j] * c[(2 * j + 1) * (2 * k + 1) % period];
        y[k] = sum;
    }
    return y;
}

// FFTW's REDFT11 in double precision, halved: it computes twice the sum.
template <class T>
std::vector<long double> fftwReference(const std::vector<T>& x) {
    const int n = static_cast<int>(x.size());
    double* in = fftw_alloc_real(n);
    double* out = fftw_alloc_real(n);
    fftw_plan plan = fftw_plan_r2r_1d(n, in, out, FFTW_REDFT11, FFTW_ESTIMATE);
    for (int i = 0; i < n; ++i) in[i] = x[i];
    fftw_execute(plan);
    std::vector<long double> y(out, out + n);
    for (long double& v : y) v /= 2;
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
    return y;
}

// The largest error relative to the largest reference value.
template <class T>
double relativeError(const std::vector<T>& y, const std::vector<long double>& want) {
    long double largest = 0, error = 0;
    for (size_t k = 0; k < y.size(); ++k) {
        largest = std::max(largest, std::fabs(want[k]));
        error = std::max(error, std::fabs(want[k] - y[k]));
    }
    return static_cast<double>(error / largest);
}

// Rounding bound per element type; errors grow like log2(n).
template <class T>
double tolerance(int32_t n) {
    const double unit = sizeof(T) == 4 ? 6e-8 : 1.1e-16;
    return unit * 4 * (std::log2(static_cast<double>(n)) + 1);
}

// ---- data -------------------------------------------------------------------------------

template <class T>
std::vector<T> randomData(size_t n, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> dist(-1, 1);
    std::vector<T> x(n);
    for (T& e : x) e = static_cast<T>(dist(gen));
    return x;
}

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// ---- parameters ---------------------------------------------------------------------------

// Tests run once per length, for both element types.
class ByLength : public ::testing::TestWithParam<int32_t> {
protected:
    int32_t length() const { return GetParam(); }
};

inline std::string caseName(const ::testing::TestParamInfo<int32_t>& info) {
    std::ostringstream name;
    name << 'n' << info.param;
    return name.str();
}

// Powers of two from `first` to `last`.
inline std::vector<int32_t> powersOfTwo(int32_t first, int32_t last) {
    std::vector<int32_t> lengths;
    for (int64_t n = first; n <= last; n *= 2) lengths.push_back(static_cast<int32_t>(n));
    return lengths;
}

}  // namespace dct4test
