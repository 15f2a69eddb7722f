// Constants of the generated bodies, computed in 192-bit fixed point and
// rounded once to the precision of the body that uses them.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace gen {

// Signed fixed-point number: 64 integer bits and 192 fraction bits.  Enough
// precision that rounding to binary64 is correct for every constant we form
// (trigonometric values and short sums of their products).
class Fixed {
public:
    Fixed() = default;
    static Fixed fromInt(int64_t v);
    static Fixed ratio(int64_t num, int64_t den);

    Fixed operator+(const Fixed& o) const;
    Fixed operator-(const Fixed& o) const;
    Fixed operator-() const;
    Fixed operator*(const Fixed& o) const;
    Fixed mulInt(int64_t k) const;
    Fixed divInt(int64_t k) const;

    bool isNegative() const { return neg_ && !isZero(); }
    bool isZero() const;
    bool isTiny() const;  // below 2^-150: a cancelled exact zero
    int compareMagnitude(const Fixed& o) const;

    double toDouble() const;     // correctly rounded, ties to even
    float toFloat() const;       // correctly rounded, ties to even
    long double toLongDouble() const;

private:
    static constexpr int kLimbs = 8;       // 32-bit limbs, least significant first
    static constexpr int kFracLimbs = 6;   // binary point after limb 5
    using Mag = std::array<uint32_t, kLimbs>;
    static int cmpMag(const Mag& a, const Mag& b);
    static Mag addMag(const Mag& a, const Mag& b);
    static Mag subMag(const Mag& a, const Mag& b);  // requires a >= b
    template <class F> F roundTo(int mantissaBits) const;

    Mag mag_{};
    bool neg_ = false;
};

// A real constant: the exact value and its roundings.
struct Real {
    Fixed exact;
    double d = 0;       // nearest binary64
    float f = 0;        // nearest binary32
    long double ld = 0; // nearest 80-bit, for references and ordering

    static Real of(const Fixed& v);
    static Real ofInt(int64_t v) { return of(Fixed::fromInt(v)); }
    bool isZero() const { return d == 0; }
    bool isOne() const { return d == 1 && exact.compareMagnitude(Fixed::fromInt(1)) == 0 && !exact.isNegative(); }
    bool isMinusOne() const { return d == -1 && exact.compareMagnitude(Fixed::fromInt(1)) == 0; }
    Real operator-() const { return of(-exact); }
};

// A complex constant.
struct Complex {
    Real re, im;
    static Complex of(const Fixed& re, const Fixed& im) { return {Real::of(re), Real::of(im)}; }
    static Complex one() { return {Real::ofInt(1), Real::ofInt(0)}; }
    static Complex real(const Fixed& v) { return {Real::of(v), Real::ofInt(0)}; }
    bool isOne() const { return re.isOne() && im.isZero(); }
    bool isZero() const { return re.isZero() && im.isZero(); }
    bool sameAs(const Complex& o) const { return re.d == o.re.d && im.d == o.im.d; }
    Complex operator*(const Complex& o) const;
    Complex operator-() const { return {-re, -im}; }
};

// cos(2*pi*k/n) and sin(2*pi*k/n), exact in the quadrant points.
Fixed cosTurn(int64_t k, int64_t n);
Fixed sinTurn(int64_t k, int64_t n);
// exp(sign * 2*pi*i*k/n)
Complex rootOfUnity(int64_t k, int64_t n, int sign);
// 1/sqrt(n)
Fixed inverseSqrt(int n);

// Literals: hexadecimal floating constants, exact by construction.
std::string literal(double v);
std::string literal(float v);

}  // namespace gen
