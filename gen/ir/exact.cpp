#include "ir/exact.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace gen {

int Fixed::cmpMag(const Mag& a, const Mag& b) {
    for (int i = kLimbs - 1; i >= 0; --i)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return 0;
}

Fixed::Mag Fixed::addMag(const Mag& a, const Mag& b) {
    Mag r{};
    uint64_t carry = 0;
    for (int i = 0; i < kLimbs; ++i) {
        const uint64_t s = uint64_t{a[i]} + b[i] + carry;
        r[i] = static_cast<uint32_t>(s);
        carry = s >> 32;
    }
    if (carry) throw std::overflow_error("Fixed overflow");
    return r;
}

Fixed::Mag Fixed::subMag(const Mag& a, const Mag& b) {
    Mag r{};
    int64_t borrow = 0;
    for (int i = 0; i < kLimbs; ++i) {
        int64_t s = int64_t{a[i]} - b[i] - borrow;
        borrow = s < 0;
        if (s < 0) s += int64_t{1} << 32;
        r[i] = static_cast<uint32_t>(s);
    }
    return r;
}

Fixed Fixed::fromInt(int64_t v) {
    Fixed f;
    f.neg_ = v < 0;
    const uint64_t m = v < 0 ? uint64_t(0) - uint64_t(v) : uint64_t(v);
    f.mag_[kFracLimbs] = static_cast<uint32_t>(m);
    f.mag_[kFracLimbs + 1] = static_cast<uint32_t>(m >> 32);
    return f;
}

Fixed Fixed::ratio(int64_t num, int64_t den) { return fromInt(num).divInt(den); }

Fixed Fixed::operator-() const {
    Fixed r = *this;
    r.neg_ = !neg_;
    return r;
}

Fixed Fixed::operator+(const Fixed& o) const {
    Fixed r;
    if (neg_ == o.neg_) {
        r.mag_ = addMag(mag_, o.mag_);
        r.neg_ = neg_;
    } else if (cmpMag(mag_, o.mag_) >= 0) {
        r.mag_ = subMag(mag_, o.mag_);
        r.neg_ = neg_;
    } else {
        r.mag_ = subMag(o.mag_, mag_);
        r.neg_ = o.neg_;
    }
    return r;
}

Fixed Fixed::operator-(const Fixed& o) const { return *this + (-o); }

Fixed Fixed::operator*(const Fixed& o) const {
    std::array<uint64_t, 2 * kLimbs + 1> acc{};
    for (int i = 0; i < kLimbs; ++i) {
        uint64_t carry = 0;
        for (int j = 0; j < kLimbs; ++j) {
            const uint64_t p = uint64_t{mag_[i]} * o.mag_[j] + acc[i + j] + carry;
            acc[i + j] = p & 0xffffffffu;
            carry = p >> 32;
        }
        acc[i + kLimbs] += carry;
    }
    Fixed r;
    for (int i = 0; i < kLimbs; ++i) r.mag_[i] = static_cast<uint32_t>(acc[i + kFracLimbs]);
    for (int i = kLimbs + kFracLimbs; i < 2 * kLimbs; ++i)
        if (acc[i]) throw std::overflow_error("Fixed overflow");
    r.neg_ = neg_ != o.neg_;
    return r;
}

Fixed Fixed::mulInt(int64_t k) const { return *this * fromInt(k); }

Fixed Fixed::divInt(int64_t k) const {
    if (k == 0) throw std::domain_error("Fixed division by zero");
    Fixed r;
    const uint64_t d = k < 0 ? uint64_t(0) - uint64_t(k) : uint64_t(k);
    unsigned __int128 rem = 0;
    for (int i = kLimbs - 1; i >= 0; --i) {
        const unsigned __int128 cur = (rem << 32) | mag_[i];
        r.mag_[i] = static_cast<uint32_t>(cur / d);
        rem = cur % d;
    }
    r.neg_ = neg_ != (k < 0);
    return r;
}

bool Fixed::isZero() const {
    for (uint32_t l : mag_)
        if (l) return false;
    return true;
}

bool Fixed::isTiny() const {
    // 2^-150 lies in fraction limb 1 (bits 32..63 of the fraction are 2^-161..2^-130).
    for (int i = 2; i < kLimbs; ++i)
        if (mag_[i]) return false;
    return mag_[1] < (1u << 10);
}

int Fixed::compareMagnitude(const Fixed& o) const { return cmpMag(mag_, o.mag_); }

template <class F>
F Fixed::roundTo(int mantissaBits) const {
    if (isZero()) return F(0);
    // Index of the highest set bit, counted from the least significant bit.
    int top = kLimbs * 32 - 1;
    while (!((mag_[top / 32] >> (top % 32)) & 1u)) --top;
    auto bit = [&](int i) -> unsigned { return i < 0 ? 0u : (mag_[i / 32] >> (i % 32)) & 1u; };
    uint64_t mant = 0;
    const int low = top - mantissaBits + 1;
    for (int i = top; i >= low; --i) mant = (mant << 1) | bit(i);
    // Round to nearest, ties to even, from the remaining bits.
    const unsigned half = bit(low - 1);
    bool sticky = false;
    for (int i = low - 2; i >= 0 && !sticky; --i) sticky = bit(i);
    if (half && (sticky || (mant & 1u))) ++mant;
    const int exponent = low - kFracLimbs * 32;
    const F v = std::ldexp(static_cast<F>(mant), exponent);
    return neg_ ? -v : v;
}

double Fixed::toDouble() const { return roundTo<double>(53); }
float Fixed::toFloat() const { return roundTo<float>(24); }
long double Fixed::toLongDouble() const { return roundTo<long double>(64); }

Real Real::of(const Fixed& v) {
    Real r;
    r.exact = v.isTiny() ? Fixed{} : v;
    r.d = r.exact.toDouble();
    r.f = r.exact.toFloat();
    r.ld = r.exact.toLongDouble();
    return r;
}

Complex Complex::operator*(const Complex& o) const {
    return Complex::of(re.exact * o.re.exact - im.exact * o.im.exact,
                       re.exact * o.im.exact + im.exact * o.re.exact);
}

namespace {

// atan(1/x) by its alternating series.
Fixed atanInv(int64_t x) {
    Fixed sum, term = Fixed::ratio(1, x);
    const int64_t x2 = x * x;
    for (int64_t k = 0; !term.isZero(); ++k) {
        const Fixed t = term.divInt(2 * k + 1);
        sum = (k % 2) ? sum - t : sum + t;
        term = term.divInt(x2);
    }
    return sum;
}

const Fixed& pi() {
    static const Fixed value = atanInv(5).mulInt(16) - atanInv(239).mulInt(4);  // Machin
    return value;
}

// sin and cos of x for 0 <= x <= pi/4, by their Taylor series.
void sinCosSmall(const Fixed& x, Fixed& s, Fixed& c) {
    s = Fixed{};
    c = Fixed{};
    Fixed term = Fixed::fromInt(1);  // x^k / k!
    for (int64_t k = 0; !term.isZero(); ++k) {
        Fixed& target = (k % 2) ? s : c;
        target = ((k / 2) % 2) ? target - term : target + term;
        term = (term * x).divInt(k + 1);
    }
}

// (cos, sin) of 2*pi*k/n, folded into the first octant so that the series
// converges fast and quadrant points are exact.
void turn(int64_t k, int64_t n, Fixed& c, Fixed& s) {
    k %= n;
    if (k < 0) k += n;
    const int64_t quadrant = (4 * k) / n;
    int64_t rem = (4 * k) % n;  // angle within the quadrant: (pi/2) * rem / n
    bool swap = false;
    if (2 * rem > n) {
        rem = n - rem;
        swap = true;
    }
    Fixed cs, sn;
    if (rem == 0) {
        cs = Fixed::fromInt(1);
    } else {
        sinCosSmall(pi().mulInt(rem).divInt(2 * n), sn, cs);
    }
    if (swap) std::swap(cs, sn);
    switch (quadrant) {
        case 0: c = cs; s = sn; break;
        case 1: c = -sn; s = cs; break;
        case 2: c = -cs; s = -sn; break;
        default: c = sn; s = -cs; break;
    }
}

}  // namespace

Fixed cosTurn(int64_t k, int64_t n) {
    Fixed c, s;
    turn(k, n, c, s);
    return c;
}

Fixed sinTurn(int64_t k, int64_t n) {
    Fixed c, s;
    turn(k, n, c, s);
    return s;
}

Complex rootOfUnity(int64_t k, int64_t n, int sign) {
    Fixed c, s;
    turn(k, n, c, s);
    return Complex::of(c, sign < 0 ? -s : s);
}

std::string literal(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%a", v);
    return buf;
}

std::string literal(float v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%af", static_cast<double>(v));
    return buf;
}

Fixed inverseSqrt(int n) {
    // Newton's iteration y <- y (3 - n y^2) / 2 from the long double estimate.
    Fixed y = Fixed::ratio(static_cast<int64_t>(std::ldexp(1.0L / std::sqrt(static_cast<long double>(n)), 62)),
                           int64_t{1} << 62);
    for (int i = 0; i < 4; ++i) y = (y * (Fixed::fromInt(3) - (y * y).mulInt(n))).divInt(2);
    return y;
}

}  // namespace gen
