// Values R + jI over a parent arithmetic of real values, with j a formal unit.
// A complex constant c = a + jb multiplies as (aR - bI) + j(bR + aI), every
// product a real coefficient on a whole parent value.  Two readings of j:
// - j is the data's i: a complex transform written out as real arithmetic,
//   where a real input is (x, 0) and the zeros fold away on construction (the
//   scalar bodies of the real, Hartley and short complex families);
// - j is a unit of its own over complex parent values: a real-coefficient
//   network on complex data, with j replaced by i at the end (the deferred
//   rotation of the tvk64fc Rader form).
#pragma once

#include <utility>
#include <vector>

#include "ir/value_arithmetic.h"

namespace gen {

class PairArithmetic : public ValueArithmetic {
public:
    explicit PairArithmetic(Arithmetic& parent) : parent_(parent) {}

    // A parent value as R + j0, and R + jI.
    int lift(int parentValue) { return make(parentValue, parent_.zero()); }
    int make(int r, int i);
    Arithmetic& parent() { return parent_; }
    bool mixedPrecision() const override { return parent_.mixedPrecision(); }
    int re(int v) const { return values_[v].first; }
    int im(int v) const { return values_[v].second; }
    // R - jI
    int conjugate(int v);
    Ref conjugate(const Ref& r) override { return r.isZero() ? r : Ref{conjugate(r.node), 0}; }
    bool isReal(const Ref& r) const override { return r.isZero() || parent_.isZero(im(r.node)); }
    bool isZero(int v) const override { return parent_.isZero(re(v)) && parent_.isZero(im(v)); }

    int zero() override;
    int add(int a, int b) override;
    int sub(int a, int b) override;
    int mul(int a, const Complex& c) override;
    int widen(int a) override;
    int narrow(int a) override;
    using ValueArithmetic::add;

private:
    int times(int parentValue, const Real& k);  // a real product, none for 0 and 1

    Arithmetic& parent_;
    std::vector<std::pair<int, int>> values_;
};

}  // namespace gen
