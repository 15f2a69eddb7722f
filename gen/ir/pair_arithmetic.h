// Values R + jI over a parent arithmetic, with j a formal imaginary unit that
// is not the i of the data.  A complex constant c = a + jb then multiplies as
// (aR - bI) + j(bR + aI): every product is by a real coefficient on a whole
// parent value, so a transform run here is a real-coefficient network on
// complex values.  Replacing j by the parent's own unit at the end is the
// deferred rotation of the tvk64fc Rader form.
#pragma once

#include <utility>
#include <vector>

#include "ir/graph.h"

namespace gen {

class PairArithmetic : public Arithmetic {
public:
    explicit PairArithmetic(Arithmetic& parent) : parent_(parent) {}

    // A parent value as R + j0.
    int lift(int parentValue) { return make(parentValue, parent_.zero()); }
    int re(int v) const { return values_[v].first; }
    int im(int v) const { return values_[v].second; }
    // R - jI
    int conjugate(int v);
    Ref conjugate(const Ref& r) override { return r.isZero() ? r : Ref{conjugate(r.node), 0}; }
    bool isReal(const Ref& r) const override { return r.isZero() || parent_.isZero(im(r.node)); }
    bool isZero(int v) const override { return parent_.isZero(re(v)) && parent_.isZero(im(v)); }

    int width() const override { return 1; }
    bool inLane() const override { return true; }
    void setInLane(bool) override {}

    int zero() override;
    int add(int a, int b) override;
    int sub(int a, int b) override;
    int mul(int a, const Complex& c) override;
    int widen(int a) override;
    int narrow(int a) override;
    int valueOf(const Ref& r) override;

    Signal scale(const Signal& s, const std::function<Complex(int)>& constant) override;
    Signal add(const Signal& x, const Signal& y) override;
    Batch lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre = {}) override;

private:
    int make(int r, int i);
    int times(int parentValue, const Real& k);  // a real product, none for 0 and 1

    Arithmetic& parent_;
    std::vector<std::pair<int, int>> values_;
};

}  // namespace gen
